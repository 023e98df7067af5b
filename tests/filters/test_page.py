"""Pages: what stands in them, that they refer to nothing outside, and what a browser makes of them."""

import base64
import gzip
import html
import io
import json
import os
import pathlib
import re
import shutil
import subprocess

import pytest
from conftest import QUERY, SAMPLE, fasta, run_filter, table
from zelvan_easy.page import charts, links, write_page
from zelvan_easy.page import downloads as page_downloads
from zelvan_easy.report import open_report


PROTEINS = fasta(SAMPLE)
FLAGS = ("--headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking "
         "--disable-component-update --disable-sync").split()  # fmt: skip


def page_text(page):
    """The text of a page, after checking that nothing in it is fetched, and that its links lead to places in it."""
    assert not re.search(r"<link|<img|@import|url\(|\bsrc=", page)
    anchors = set(re.findall(r'\bid="?([^" >]+)', page))
    for link in re.findall(r'\bhref="?([^" >]+)', page):
        assert link[0] != "#" or link[1:] in anchors, link
        assert link.startswith(("#", "https://", "data:application/gzip;base64,"))
    return html.unescape(re.sub(r"<(style|script)>.*?</\1>|<[^>]*>", "", page, flags=re.S))


def downloads(page):
    return {name: gzip.decompress(base64.b64decode(data)).decode() for name, data in
            re.findall(r'download="([^"]+)" href="data:application/gzip;base64,([^"]+)"', page)}  # fmt: skip


def test_page_of_an_iterated_search(report):
    text = report("-niter", 2, "-v", 1000)
    page = run_filter("zelvan2html", text)
    words = page_text(page)
    hits = table(text, "--hits")
    entered = re.search(r"# Reported in this iteration \(1\).*\n#\n((?: +\d+ .*\n)*)", text)[1].splitlines()
    for part in (f"{len(hits)} hits", f"{len(entered)} came in", "0 went", "All sequences searched", "Columns in numbers",
                 "not converged", *(hit[2] for hit in hits)):  # fmt: skip
        assert part in words
    shown = table(text)[:250]
    assert page.count("<pre class=") == len(shown) + page.count("Multiple alignment, part") + 1  # and a licence
    assert set(re.findall(r'href="#a(\d+)"', page)) == {row[0] for row in table(text, "-c", "rank")[:250]}
    # The first row of the table says what the table of the filter says.
    best = table(text, "-c", "sseqid,bitscore,score,pident,qcovs,slen,stitle")[0]
    cells = re.split("<td[^>]*>", re.search(r"<tbody>\n(<tr.*)", page)[1])[1:]
    cells = [html.unescape(re.sub("<[^>]*>", "", cell)) for cell in cells]
    percent = f"{float(best[3]):.0f} %"
    assert cells[1:2] + cells[3:] == [f"{best[0]} UniProt", f"{float(best[1]):.0f}", best[2], percent, f"{best[4]} %", *best[5:]]
    files = downloads(page)
    assert sorted(name.rsplit(".", 2)[1] for name in files) == ["a3m", "json", "tsv"]
    by_kind = {name.rsplit(".", 2)[1]: made for name, made in files.items()}
    assert by_kind["a3m"] == run_filter("zelvan2a3m", text)
    assert json.loads(by_kind["json"]) == json.loads(run_filter("zelvan2json", text))
    assert by_kind["tsv"].splitlines()[1:] == run_filter("zelvan2tsv", text, "--unaligned", "-c", "std,qlen,slen,stitle").splitlines()


def test_pages_of_other_reports(report, dna):
    one = report("-niter", 1)
    everything = report("-d", QUERY.parent / "dna_sample.fasta", "-mode", 10)
    best = max((line.split() for line in everything.splitlines()), key=lambda words: int(words[0]))[1]
    for text, args, words, there in (
        (report("-niter", 1, "-npt", 0, "-nout", 9), (), "number that chance brings", False),
        (one, (), "number that chance brings", True),
        (one, (), "came in", False),
        (dna(), (), "1 frame shift, frame +2", True),
        (dna("-complement_query", 1), (), "frame -", True),
        (report("-d", QUERY.parent / "dna_sample.fasta", "-mode", 12, "-do_stats", 1), (), "25 hits", True),
        (everything, (), "515 hits", True),
        (everything, (), f"Best hit{best}", True),  # of a list in the order of the database
        (report("-niter", 1, "-e", 0, "-e2", 0), (), "No sequence reached", True),
        (report("-niter", 1, "-pt", 0, "-e", 0.0001), (), "All sequences searched", False),
        (one.replace("GTPase Era OS", "&<x>\xe9"), ("-a", "7"), "&<x>\ufffd", True),
    ):
        page = run_filter("zelvan2html", text, *args).encode("latin-1").decode()
        assert (words in page_text(page)) == there, words


def test_what_is_too_large_for_a_page_is_cut(report, monkeypatch):
    text, out = report("-niter", 2, "-e", 3e3), io.StringIO()
    monkeypatch.setattr(page_downloads, "_AT_ONCE", 1000)
    monkeypatch.setattr(page_downloads, "_LARGEST", 115_000)
    with open_report(io.BytesIO(text.encode())) as read:
        write_page(read, out)
    words, files = page_text(out.getvalue()), {name.split(".")[1]: text for name, text in downloads(out.getvalue()).items()}
    assert "best alignments only" in words and "hits only" in words
    listed = [hit[2] for hit in table(text, "--hits")]
    assert [line.split("\t")[1] for line in files["tsv"].splitlines()[1:]] == listed
    assert [hit["target"] for hit in json.loads(files["json"])["iterations"][0]["hits"]] == listed


def test_fitted_line_is_the_one_of_the_search(report):
    """Scores that the page's formulas give for what the report prints of its best hits."""
    with open_report(io.BytesIO(report("-niter", 1).encode())) as read:
        iteration = read.iteration()
        lengths = {f.rank: (f.target_length, f.alignments[0].score) for f in iteration.aligned() if f.alignments}
        reach = charts.score_reaching(iteration, lengths, 198)
        for hit in iteration.hits[:20]:
            assert reach(lengths[hit.rank][0], hit.significance) == pytest.approx(hit.score, rel=0.05)


@pytest.mark.parametrize("identifier, name, place", [
    ("sp|Q600K7|ENGB_MYCH2", "UniProt", "/Q600K7"), ("tr|A0A0A6N0I7|A0A0A6N0I7_9THEM", "UniProt", "/A0A0A6N0I7"),
    ("UniRef90_P12345", "UniProt", "/P12345"), ("1abc_A", "PDB", "/1abc"), ("pdb|1ABC|A", "PDB", "/1ABC"),
    ("d1dlwa_", "SCOPe", "=d1dlwa_"), ("NP_000508.1", "NCBI", "/protein/NP_000508.1"), ("NM_000517", "NCBI", "/nuccore/"),
    ("ref|WP_000101.1|", "NCBI", "=WP_000101.1"), ("contig_12", None, None), ("P", None, None),
])  # fmt: skip
def test_links_to_databases(identifier, name, place):
    link = links.link_of(identifier)
    assert (link and link[0]) == name and (place is None or place in link[1])


def test_index_of_many_queries(report, dna, tmp_path):
    for name, text in (("engb.report", report("-niter", 2)), ("dna.report", dna()),
                       ("none.report", report("-niter", 1, "-e", 0, "-e2", 0)), ("bad.report", "x")):  # fmt: skip
        (tmp_path / name).write_text(text)
    paths = [tmp_path / name for name in ("engb.report", "dna.report", "none.report", "bad.report")]
    run_filter("zelvan2html", "", *paths, "-d", tmp_path / "pages", status=1, errors="bad.report: no score list")
    index = (tmp_path / "pages/index.html").read_text()
    assert re.findall(r'<a href="([^"#]+)">', index) == ["engb.html", "dna.html", "none.html"]
    assert sorted(path.name for path in (tmp_path / "pages").iterdir()) == ["dna.html", "engb.html", "index.html", "none.html"]
    assert f"{len(table(report('-niter', 2), '--hits'))} listed, 1" in index


ACTIONS = """
<script>(async () => {
  const told = [], wait = () => new Promise((done) => setTimeout(done, 400));
  const shown = () => Array.from(document.querySelectorAll("table.hits tbody tr")).filter((row) => row.offsetHeight > 0);
  const first = () => shown()[0].cells[1].textContent.split(" ")[0];
  const form = document.querySelector(".filters");
  const set = async (name, value) => { form.elements[name].value = value; form.dispatchEvent(new Event("input")); await wait(); };
  told.push(shown().length);
  await set("words", "ERA"); told.push(shown().length);
  await set("words", ""); await set("evalue", "1e-20"); told.push(shown().length);
  await set("evalue", ""); document.querySelector("thead th:nth-child(8) button").click(); await wait(); told.push(first());
  document.querySelector("#round0")?.click(); told.push(document.querySelector("#panel0").offsetHeight > 0, document.querySelector("#panel1").offsetHeight);
  told.push(document.documentElement.scrollWidth <= innerWidth);
  if (window.axe) {
    const found = await axe.run({ exclude: [".msa pre:not(:first-child)", "table.hits tr:nth-child(n+20)"] });
    told.push(found.violations.filter((v) => ["serious", "critical"].includes(v.impact)).map((v) => v.id), found.passes.length);
  }
  document.title = "DONE " + JSON.stringify(told);
})().catch((error) => { document.title = "DONE " + error; });</script>
"""


@pytest.mark.skipif(not shutil.which("chromium"), reason="chromium is not installed")
@pytest.mark.parametrize("width, cutoff", [(1280, 1e-6), (400, 1e-6), (1280, 3e3)])
def test_browser_filters_sorts_and_finds_nothing_inaccessible(report, tmp_path, width, cutoff):
    """The last list is longer than what a page shows at once, and too long for the check of accessibility."""
    text = report("-niter", 2, "-e", cutoff)
    axe = pathlib.Path(os.environ["ZELVAN_BUILD"]).parent / "npm/node_modules/axe-core/axe.min.js"
    page = run_filter("zelvan2html", text, "-a", 5).encode("latin-1").decode()
    actions = (f"<script>{axe.read_text()}</script>" if axe.is_file() and cutoff < 1 else "") + ACTIONS
    # A window is not narrower than 500 pixels; a frame is.
    (tmp_path / "page.html").write_text(page.replace("</body>", actions + "</body>"))
    frame = f'<iframe src="page.html" style="width:{width}px;height:900px;border:0" onload="watch(this)"></iframe>'
    watch = "<script>function watch(f){setInterval(()=>{document.title=f.contentDocument.title},200)}</script>"
    (tmp_path / "frame.html").write_text(f"<!DOCTYPE html><body>{watch}{frame}</body>")
    done = subprocess.run(["chromium", *FLAGS, f"--user-data-dir={tmp_path}/profile", "--allow-file-access-from-files",
                           "--window-size=1400,1000", "--virtual-time-budget=60000", "--dump-dom",
                           f"file://{tmp_path}/frame.html"], capture_output=True, encoding="utf-8", timeout=300, check=False)  # fmt: skip
    told = re.search(r"<title>DONE (.*?)</title>", done.stdout)
    assert told, done.stderr[-2000:]
    told = json.loads(html.unescape(told[1]))
    rows = table(text, "--hits")
    lengths = {row[0]: int(row[1]) for row in table(text, "-c", "sseqid,slen")}
    assert page.count("<tr") >= len(rows)  # without scripts, too
    assert told[0] == min(500, len(rows)) and (len(rows) > 500) == (cutoff > 1)
    assert told[1] == sum("era" in (row[2] + " UniProt " + row[6]).lower() for row in rows)
    assert told[2] == sum(float(row[5]) <= 1e-20 for row in rows)
    assert lengths[told[3]] == min(lengths.values())
    assert told[4:7] == [True, 0, True]
    if axe.is_file() and cutoff < 1:
        assert told[7] == [] and told[8] > 20
