"""The forms that the results of a query can be given besides the table: one place for search and convert."""

from __future__ import annotations

from typing import Callable, NamedTuple

from zelvan_easy.failure import refused
from zelvan_easy.formats import alignment, json_report, pssm


class Form(NamedTuple):
    ending: str
    about: str
    write: Callable  # (report, text stream, residues of the query or None)
    translated: bool = False  # also of searches with DNA


def _laid_out(layout):
    def write(report, out, residues):
        if residues is None:
            alignment.write_alignment(report, out, layout)
            return
        chosen = report.iteration()
        with alignment.laid_out(alignment.alignment_rows(chosen, residues)) as rows:
            alignment.WRITERS[layout](rows, out)

    return write


def _page(report, out, residues):
    from zelvan_easy import page  # which needs Jinja2

    return page.write_page(report, out, residues=residues)


FORMS = {
    "html": Form("html", "a page", _page, True),
    "json": Form("json", "everything the report says, as JSON",
                 lambda report, out, residues: json_report.write_json(report, out), True),
    "a3m": Form("a3m", "a multiple alignment, as a3m", _laid_out("a3m")),
    "stockholm": Form("sto", "a multiple alignment, as Stockholm", _laid_out("stockholm")),
    "fasta": Form("afa", "a multiple alignment, as aligned FASTA", _laid_out("fasta")),
    "clustal": Form("aln", "a multiple alignment, as Clustal", _laid_out("clustal")),
    "pssm": Form("pssm", "the profile as a matrix in text", lambda report, out, residues: pssm.write_pssm(report, out)),
}  # fmt: skip


def find_form(name):
    if name not in FORMS:
        raise refused(f"there is no form {name}; there are tsv, {', '.join(FORMS)}")
    return FORMS[name]
