#!/usr/bin/env python3
"""Makes the manual from its Markdown sources and from the tables that the program itself is built from.

    make_manual.py OUTPUT_DIRECTORY

writes zelvan_manual.7, zelvan.1 and zelvan-easy.1 (man pages) and zelvan_manual.html. The chapters are doc/manual/*.md in the order
of their names; a line "<!-- keys -->" stands for the list of keys, which is made from the alias file, the key table
and the shipped defaults file. The Markdown understood: headings, paragraphs, lists, tables, fenced code, and in text
`code`, **strong**, *emphasis* and [links](target). Standard library only.
"""

import pathlib
import re
import sys

DOC = pathlib.Path(__file__).resolve().parent
SOURCE = DOC.parent
NO_EFFECT = "accepted for older configurations, without effect"


# ---- The list of keys


def read_keys():
    """(key, aliases, description, type, built-in default, shipped setting) in the order of the alias file."""
    table = {
        name: (kind, default)
        for name, kind, default in re.findall(
            r'\{"(\w+)", KeyType::(\w+), &Params::\w+, (?:"([^"]*)"|nullptr)\}',
            (SOURCE / "src/driver/key_table.cpp").read_text(),
        )
    }
    shipped = {}
    for line in (SOURCE / "data/config/zelvan_defaults.dat.in").read_text().splitlines():
        words = line.split()
        if words and not words[0].startswith("#"):
            shipped[words[0]] = words[1]
    keys = []
    for line in (SOURCE / "data/config/zelvan_alias.dat").read_text().splitlines():
        words, _, description = line.partition("#")
        name, *aliases = words.split()
        kind, default = table.pop(name)
        keys.append((name, aliases, description.strip(), kind, default, shipped.get(name)))
    if table:
        sys.exit(f"keys without an entry in the alias file: {', '.join(table)}")
    return keys


KINDS = {
    "INT": "whole number",
    "INT_SCALED": "whole number, in matrix units",
    "REAL_SCALED": "number, in matrix units",
    "REAL_TRUNCATED": "number",
    "FLOAT": "number",
    "DOUBLE": "number",
    "CHAR": "one character",
    "FILE_NAME": "file name",
    "TEXT": "path",
    "DATABASE_ROOT": "name",
    "STREAM_IN": "file name",
    "STREAM_OUT": "file name",
    "PRECISION": "whole number",
}


def key_blocks():
    """The keys as a definition list, then those without effect in one paragraph."""
    items, silent = [], []
    for name, aliases, description, kind, default, shipped in read_keys():
        if description.startswith(NO_EFFECT):
            silent.append(name)
            continue
        text = re.sub(r"; default:? .*$", "", description)
        facts = [KINDS[kind]]
        if kind in ("STREAM_IN", "STREAM_OUT"):
            facts.append(f"without it {description.rsplit('default: ', 1)[-1]}")
        else:
            facts.append("built in: a blank" if default == " " else f"built in: `{default}`")
        if shipped:
            facts.append(f"shipped: `{shipped.replace('@ZELVAN_DATA_DIR@', 'DATA')}`")
        spellings = ", ".join(f"`-{word}`" for word in aliases)
        items.append((f"`{name}` {spellings}", f"{text[0].upper()}{text[1:]}. ({'; '.join(facts)})"))
    names = ", ".join(f"`{name}`" for name in silent)
    return [("terms", items), ("text", f"Accepted for older configurations, without any effect: {names}.")]


# ---- Markdown to blocks


def read_blocks(text):
    """(kind, content): heading (level, text), text, list, terms, table, code."""
    blocks, lines = [], text.splitlines()
    at = 0
    while at < len(lines):
        line = lines[at]
        if not line.strip():
            at += 1
        elif line.startswith("```"):
            end = lines.index("```", at + 1)
            blocks.append(("code", lines[at + 1 : end]))
            at = end + 1
        elif line.startswith("#"):
            level = len(line) - len(line.lstrip("#"))
            blocks.append(("heading", (level, line.lstrip("# "))))
            at += 1
        elif line.strip() == "<!-- keys -->":
            blocks += key_blocks()
            at += 1
        else:
            end = at
            while end < len(lines) and lines[end].strip() and not lines[end].startswith(("```", "#")):
                end += 1
            blocks.append(read_paragraph(lines[at:end]))
            at = end
    return blocks


def read_paragraph(lines):
    if lines[0].startswith("|"):
        rows = [[cell.strip() for cell in re.split(r"(?<!\\)\|", line.strip())[1:-1]] for line in lines]
        return "table", [[cell.replace("\\|", "|") for cell in row] for i, row in enumerate(rows) if i != 1]
    if lines[0].startswith("- "):
        items = []
        for line in lines:
            if line.startswith("- "):
                items.append(line[2:])
            else:
                items[-1] += " " + line.strip()
        return "list", items
    return "text", " ".join(line.strip() for line in lines)


INLINE = re.compile(r"`([^`]+)`|\*\*([^*]+)\*\*|\*([^*\s][^*]*)\*|\[([^]]+)\]\(([^)]+)\)")


def convert_inline(text, plain, code, strong, emphasis, link):
    parts, at = [], 0
    for match in INLINE.finditer(text):
        parts.append(plain(text[at : match.start()]))
        if match[1]:
            parts.append(code(match[1]))
        elif match[2]:
            parts.append(strong(match[2]))
        elif match[3]:
            parts.append(emphasis(match[3]))
        else:
            parts.append(link(match[4], match[5]))
        at = match.end()
    return "".join(parts) + plain(text[at:])


# ---- Man page


def roff(text, literal=False):
    text = text.replace("\\", "\\e")
    if literal:
        text = text.replace("-", "\\-").replace("'", "\\(aq").replace("`", "\\(ga").replace("^", "\\(ha").replace("~", "\\(ti")
    return text


def roff_inline(text):
    line = convert_inline(
        text, roff, lambda t: f"\\fB{roff(t, True)}\\fR", lambda t: f"\\fB{roff(t)}\\fR", lambda t: f"\\fI{roff(t)}\\fR",
        lambda t, target: roff(t) if target.startswith("#") else f"{roff(t)} ({roff(target, True)})",
    )  # fmt: skip
    return "\\&" + line if line[:1] in (".", "'") else line


def roff_table(rows):
    columns = "l " * (len(rows[0]) - 1) + "lx"
    bold = " ".join("lb" for _ in rows[0])
    lines = [".TS", "tab(\t);", bold, columns + "."]
    for row in rows:
        lines.append("\t".join(f"T{{\n{roff_inline(cell)}\nT}}" for cell in row))
    return [*lines, ".TE", ".PP"]


def man_page(blocks, name, section, title):
    lines = ["'\\\" t", f'.TH {name.upper()} {section} "" "ZELVAN 2.3.9" "{title}"', ".nh", ".ad l"]
    for kind, content in blocks:
        if kind == "heading":
            level, text = content
            macro = {1: ".SH", 2: ".SS"}.get(level)
            words = roff(text.replace("`", ""), False)
            lines += [f'{macro} "{words}"'] if macro else [".PP", f"\\fB{words}\\fR"]
        elif kind == "text":
            lines += [".PP", roff_inline(content)]
        elif kind == "list":
            for item in content:
                lines += [".IP \\(bu 2", roff_inline(item)]
        elif kind == "terms":
            for term, text in content:
                lines += [".TP", roff_inline(term), roff_inline(text)]
        elif kind == "table":
            lines += roff_table(content)
        else:
            lines += [".PP", ".in +2", ".nf"]
            lines += [("\\&" if line[:1] in (".", "'") else "") + roff(line, True) for line in content]
            lines += [".fi", ".in"]
    return "\n".join(lines) + "\n"


# ---- HTML page

STYLE = """
:root { --ink:#1d2733; --soft:#5b6876; --line:#d5dbe2; --paper:#fff; --panel:#f5f7f9; --link:#0b5a8f; }
@media (prefers-color-scheme: dark) { :root { --ink:#e4e9ee; --soft:#a4b1be; --line:#3a4653; --paper:#14191f;
  --panel:#1d242c; --link:#6bb7ea; } }
body { margin:0 auto; padding:1.5rem; max-width:54rem; color:var(--ink); background:var(--paper);
  font:16px/1.55 system-ui,"Segoe UI","Helvetica Neue",Arial,sans-serif; }
h1 { font-size:1.5rem; margin:2.4rem 0 .6rem; border-bottom:1px solid var(--line); } h2 { font-size:1.15rem; }
h3 { font-size:1rem; } a { color:var(--link); } nav { columns:2; } nav a { display:block; }
pre { padding:.7rem; background:var(--panel); border-radius:6px; overflow-x:auto; font-size:13px; line-height:1.35; }
code { font-family:ui-monospace,"DejaVu Sans Mono",Menlo,Consolas,monospace; font-size:.9em; }
table { border-collapse:collapse; } th, td { text-align:left; vertical-align:top; padding:.25rem .8rem .25rem 0;
  border-bottom:1px solid var(--line); } dt { margin-top:.7rem; } dd { margin-left:1.5rem; }
@media print { body { max-width:none; font-size:11px; } pre { font-size:8px; white-space:pre-wrap; } }
"""


def escape(text):
    return text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")


def anchor(text):
    return re.sub(r"[^a-z0-9]+", "-", text.lower()).strip("-")


def html_inline(text):
    return convert_inline(
        text, escape, lambda t: f"<code>{escape(t)}</code>", lambda t: f"<strong>{escape(t)}</strong>",
        lambda t: f"<em>{escape(t)}</em>", lambda t, target: f'<a href="{escape(target)}">{escape(t)}</a>',
    )  # fmt: skip


def html_table(rows):
    head, *body = ["".join(f"<{tag}>{html_inline(cell)}</{tag}>" for cell in row)
                   for tag, row in zip(["th"] + ["td"] * len(rows), rows)]  # fmt: skip
    return f"<table><tr>{head}</tr>" + "".join(f"<tr>{row}</tr>" for row in body) + "</table>"


def html_page(blocks, title):
    parts = []
    contents = [text for kind, value in blocks if kind == "heading" and value[0] == 1 for text in [value[1]]]
    for kind, content in blocks:
        if kind == "heading":
            level, text = content
            parts.append(f'<h{level} id="{anchor(text)}">{html_inline(text)}</h{level}>')
        elif kind == "text":
            parts.append(f"<p>{html_inline(content)}</p>")
        elif kind == "list":
            parts.append("<ul>" + "".join(f"<li>{html_inline(item)}</li>" for item in content) + "</ul>")
        elif kind == "terms":
            rows = (f"<dt>{html_inline(term)}</dt><dd>{html_inline(text)}</dd>" for term, text in content)
            parts.append("<dl>" + "".join(rows) + "</dl>")
        elif kind == "table":
            parts.append(html_table(content))
        else:
            parts.append("<pre>" + escape("\n".join(content)) + "</pre>")
    links = "".join(f'<a href="#{anchor(text)}">{escape(text)}</a>' for text in contents)
    return (
        '<!DOCTYPE html>\n<html lang="en"><head><meta charset="utf-8"><meta name="viewport" '
        f'content="width=device-width, initial-scale=1"><title>{title}</title><style>{STYLE}</style></head>\n'
        f"<body><nav>{links}</nav>\n" + "\n".join(parts) + "\n</body></html>\n"
    )


def manual_blocks():
    return [block for path in sorted((DOC / "manual").glob("*.md")) for block in read_blocks(path.read_text())]


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    output = pathlib.Path(sys.argv[1])
    output.mkdir(parents=True, exist_ok=True)
    manual = manual_blocks()
    (output / "zelvan_manual.7").write_text(man_page(manual, "zelvan_manual", 7, "Manual of ZELVAN"))
    for name in ("zelvan", "zelvan-easy"):
        command = read_blocks((DOC / f"{name}.1.md").read_text())
        (output / f"{name}.1").write_text(man_page(command, name, 1, "User Commands"))
    (output / "zelvan_manual.html").write_text(html_page(manual, "Manual of ZELVAN"))


if __name__ == "__main__":
    main()
