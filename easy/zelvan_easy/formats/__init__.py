"""What a report can be turned into; each module writes one kind of file."""


def printable(text):
    """A text as valid Unicode: bytes of a title that are no UTF-8 become replacement characters."""
    return text.encode("utf-8", "surrogateescape").decode("utf-8", "replace")
