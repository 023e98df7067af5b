"""Reads FASTA files, for the scripts of this folder."""


def records(path):
    """Yields (header without '>', sequence)."""
    header, parts = None, []
    with open(path, encoding="latin-1") as source:
        for line in source:
            if line.startswith(">"):
                if header is not None:
                    yield header, "".join(parts)
                header, parts = line[1:].rstrip("\n"), []
            else:
                parts.append(line.strip())
    if header is not None:
        yield header, "".join(parts)
