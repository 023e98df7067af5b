"""Where public databases tell more about an identifier."""

from __future__ import annotations

import re

_UNIPROT = r"[OPQ]\d[A-Z\d]{3}\d|[A-NR-Z]\d(?:[A-Z][A-Z\d]{2}\d){1,2}"
_RULES = [
    (rf"(?:sp|tr)\|((?:{_UNIPROT})(?:-\d+)?)\|.*", "UniProt", "https://www.uniprot.org/uniprotkb/{}"),
    (rf"(?:UniRef\d+_|UniProtKB:)?((?:{_UNIPROT}))(?:-\d+)?", "UniProt", "https://www.uniprot.org/uniprotkb/{}"),
    (r"UniRef\d+_(UPI[\dA-F]{10})", "UniParc", "https://www.uniprot.org/uniparc/{}"),
    (r"pdb\|(\d[A-Za-z\d]{3})\b.*", "PDB", "https://www.rcsb.org/structure/{}"),
    (r"(\d[A-Za-z\d]{3})[_:][A-Za-z\d]{1,4}", "PDB", "https://www.rcsb.org/structure/{}"),
    (r"([dge]\d[a-z\d]{3}[a-z\d_.][a-z\d_])", "SCOPe", "https://scop.berkeley.edu/sid={}"),
    (r"(?:gi\|\d+\|)?(?:ref|gb|emb|dbj|tpg)\|([A-Z\d_]+(?:\.\d+)?)\|?.*", "NCBI", "https://www.ncbi.nlm.nih.gov/search/all/?term={}"),
    (r"([NXYWA]P_\d+(?:\.\d+)?)", "NCBI", "https://www.ncbi.nlm.nih.gov/protein/{}"),
    (r"([NX][CMRGTWZ]_[A-Z\d]+(?:\.\d+)?)", "NCBI", "https://www.ncbi.nlm.nih.gov/nuccore/{}"),
    (r"([A-Z]{3}\d{5}(?:\d\d)?\.\d+)", "NCBI", "https://www.ncbi.nlm.nih.gov/protein/{}"),
]  # fmt: skip
_COMPILED = [(re.compile(pattern), name, address) for pattern, name, address in _RULES]


def link_of(identifier):
    """(name of the database, address), or None."""
    for pattern, name, address in _COMPILED:
        match = pattern.fullmatch(identifier)
        if match:
            return name, address.format(match[1])
    return None
