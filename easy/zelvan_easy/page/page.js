// What a page does beyond standing there: sorts and filters its table, opens what a link leads to, unpacks downloads.
(() => {
  const number = (text) => {
    const value = parseFloat(text);
    return isNaN(value) ? Infinity : value;
  };
  Tablesort.extend("number", () => false, (a, b) => number(b) - number(a));
  document.querySelectorAll("table.sortable").forEach((table) => {
    table.querySelectorAll("thead th").forEach((head) => {
      const button = document.createElement("button");
      button.type = "button";
      button.append(...head.childNodes);
      head.append(button);
    });
    new Tablesort(table);
  });

  const table = document.querySelector("table.hits");
  const form = document.querySelector(".filters");
  const more = document.querySelector(".more");
  if (table && form) {
    const all = Number(table.dataset.hits), atOnce = Number(table.dataset.shown);
    let rest = document.querySelector("noscript.rest"); // rows that are text until they are needed
    const complete = () => {
      if (!rest) return;
      const text = rest.textContent;
      table.tBodies[0].insertAdjacentHTML("beforeend", text.slice(text.indexOf("<tbody>") + 7, text.lastIndexOf("</tbody>")));
      rest.remove();
      rest = null;
    };
    let rows;
    const read = () => Array.from(table.tBodies[0].rows, (row) => ({
      row,
      values: Array.from(row.cells, (cell) => number(cell.textContent)),
      text: row.textContent.toLowerCase(),
    }));
    const column = (name) => table.querySelector(`thead th[data-name="${name}"]`).cellIndex;
    const limits = [["evalue", 1], ["identity", -1], ["coverage", -1]].map(([name, sign]) => ({
      input: form.elements[name], sign, at: column(name),
    }));
    const told = form.querySelector("output");
    const count = (number) => number.toLocaleString("en");
    let most = atOnce;
    const tell = (found) => {
      told.value = (found === all ? `${count(all)} hits` : `${count(found)} of ${count(all)} hits`) +
        (found > most ? `, the first ${most} shown` : "");
      more.hidden = found <= most;
    };
    const filter = () => {
      complete();
      rows ??= read();
      const words = form.elements.words.value.toLowerCase().split(/\s+/).filter(Boolean);
      const active = limits.map((l) => ({ ...l, limit: parseFloat(l.input.value) })).filter((l) => !isNaN(l.limit));
      let found = 0;
      for (const { row, values, text } of rows) {
        const keep = words.every((word) => text.includes(word)) &&
          active.every(({ at, sign, limit }) => isFinite(values[at]) && sign * values[at] <= sign * limit);
        const hidden = !keep || found >= most;
        found += keep;
        if (row.hidden !== hidden) row.hidden = hidden;
      }
      tell(found);
    };
    table.addEventListener("beforeSort", complete);
    table.addEventListener("afterSort", () => { rows = undefined; filter(); });
    more.addEventListener("click", () => { most = Infinity; filter(); });
    let waiting;
    form.addEventListener("input", () => { clearTimeout(waiting); waiting = setTimeout(filter, 120); });
    form.addEventListener("reset", () => setTimeout(filter));
    form.addEventListener("submit", (event) => event.preventDefault());
    tell(all);
  }

  const open = () => {
    const target = location.hash && document.getElementById(decodeURIComponent(location.hash.slice(1)));
    if (target && target.tagName === "DETAILS") target.open = true;
  };
  addEventListener("hashchange", open);
  open();
  let closed = [];
  addEventListener("beforeprint", () => {
    closed = Array.from(document.querySelectorAll("#alignments details:not([open])")).slice(0, 50);
    closed.forEach((details) => { details.open = true; });
  });
  addEventListener("afterprint", () => closed.forEach((details) => { details.open = false; }));

  document.querySelectorAll(".downloads a").forEach((link) => link.addEventListener("click", async (event) => {
    if (!window.DecompressionStream) return;
    event.preventDefault();
    const packed = Uint8Array.from(atob(link.href.split(",")[1]), (c) => c.charCodeAt(0));
    const plain = await new Response(new Blob([packed]).stream().pipeThrough(new DecompressionStream("gzip"))).blob();
    const save = document.createElement("a");
    save.href = URL.createObjectURL(plain);
    save.download = link.download.replace(/\.gz$/, "");
    save.click();
    setTimeout(() => URL.revokeObjectURL(save.href), 60000);
  }));
})();
