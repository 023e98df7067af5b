-- Filter of pandoc for man pages: what users copy, options and commands, keeps its ASCII characters, which groff
-- would set as typographic ones, and tables leave room for the gaps between their columns on a screen of 80.

local escapes = {
  ["\\"] = "\\[rs]", ["-"] = "\\-", ["'"] = "\\[aq]", ["`"] = "\\[ga]", ["^"] = "\\[ha]", ["~"] = "\\[ti]",
  ['"'] = "\\[dq]"
}

local function literal(text)
  return (text:gsub("[\\%-'`^~\"]", escapes))
end

function Code(code)
  return pandoc.RawInline("man", "\\f[B]" .. literal(code.text) .. "\\f[R]")
end

function CodeBlock(block)
  local lines = literal(block.text):gsub("\n%.", "\n\\&."):gsub("^%.", "\\&.")
  return pandoc.RawBlock("man", ".IP\n.nf\n" .. lines .. "\n.fi")
end

function Table(t)
  for _, column in ipairs(t.colspecs) do
    column[2] = column[2] and column[2] * (1 - 0.045 * (#t.colspecs - 1))
  end
  return t
end
