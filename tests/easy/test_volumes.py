"""Sets of volumes that are samples of the whole."""

import os
import signal
import subprocess
import time

import pytest
from conftest import BUILD, EXAMPLES, Folder, fasta_of, random_proteins
from zelvan_easy.database import read_built, read_sequences

SMALL = {"ZELVAN": str(BUILD / "tests" / "zelvan_forced"), "ZELVANDIR": str(BUILD / "config")}


@pytest.fixture(scope="session")
def made(tmp_path_factory):
    """A folder with 12,000 proteins in text.fa, as one database, as two volumes, and as volumes by length."""
    folder = Folder(tmp_path_factory.mktemp("volumes"))
    proteins = (EXAMPLES / "uniprot_sample.fasta").read_text() + random_proteins(8000)
    # one with an odd number between, so that two of a name come to lie in different volumes, and two more in one
    engb = "".join(fasta_of(["engb"]).decode().split("\n")[1:])
    proteins += f">twin\n{engb}\n>odd\nMKUOBZJX\n>r1\nMKV\n>twin\n{engb}\n>r2\nMKVL\n>twin\n{engb}\n"
    folder.file("text.fa", proteins)
    assert folder.easy("build", "text.fa", "one") == 0, folder.errors
    assert folder.easy("build", "--volumes", "2", "text.fa", "set") == 0 and not folder.errors, folder.errors
    limit = str((folder.path / "one.bsq").stat().st_size // 2 + 10_000)
    by_length = {**SMALL, "ZELVAN_TEST_CHARACTERS": limit}
    assert folder.easy("build", "text.fa", "by_length", environment=by_length.items()) == 0, folder.errors
    return folder


def listed(folder, database):
    """The score list that zelvan itself prints."""
    done = subprocess.run([BUILD / "zelvan", "-s", EXAMPLES / "engb.fasta", "-dd", folder.path, "-bdb", database, "-niter", "1"],
                          capture_output=True, text=True, check=True, cwd=folder.path,
                          env={**os.environ, "ZELVANDIR": str(BUILD / "config")})  # fmt: skip
    return sorted(line.split(None, 1)[1] for line in done.stdout.split("# End_Scores")[0].splitlines() if line[0] == " ")


def test_dealt_volumes_are_one_database(made):
    """zelvan takes them for one, which holds what one built at once holds; so does each volume with its share."""
    assert listed(made, "set") == listed(made, "one") and len(listed(made, "one")) > 20
    names = [line[1:].split()[0] for line in (made.path / "text.fa").read_text().splitlines() if line.startswith(">")]
    for volume in (0, 1):
        stored = [name for name, _, _ in read_sequences(made.path, f"set.{volume:02}")]
        assert sorted(stored) == sorted(names[volume::2])
        assert made.easy("info", f"set.{volume:02}") == 0 and f"sequences  {len(stored)}\n" in made.out
    lists = [(made.path / f"{name}.volumes").read_text().split("volume ")[0] for name in ("set", "by_length")]
    assert lists[0] == lists[1]  # totals, and how often each residue is there
    of_set, by_length = read_built(made.path, "set"), read_built(made.path, "by_length")
    assert [share[0] for share in of_set.shares] == [6003, 6003] and by_length.shares == []
    assert sum(share[1] for share in of_set.shares) == of_set.residues == by_length.residues


# ---- Builds that do not come to their end


def interrupt(folder, command, environment, ready, by=signal.SIGINT):
    """Starts zelvan-easy, and interrupts it when it is ready for that."""
    running = subprocess.Popen([str(BUILD / "zelvan-easy"), *command], cwd=folder.path, stderr=subprocess.PIPE,
                               stdout=subprocess.DEVNULL, env={**os.environ, **environment},
                               preexec_fn=lambda: signal.signal(signal.SIGINT, signal.default_int_handler))  # fmt: skip
    while running.poll() is None and not ready():
        time.sleep(0.02)
    running.send_signal(by)
    _, errors = running.communicate(timeout=60)
    assert running.returncode == 130 and b"interrupted" in errors and b"Traceback" not in errors


def stays(folder, before):
    return {path.name: path.read_bytes() for path in folder.path.iterdir() if path.name.startswith(("set", "."))} == before


def test_builds_that_end_early_leave_what_was_there(folder):
    folder.file("text.fa", random_proteins(400))
    assert folder.easy("build", "--volumes", "2", "text.fa", "set") == 0, folder.errors
    assert "together" in folder.errors  # so few sequences are not searched volume by volume
    before = {path.name: path.read_bytes() for path in folder.path.glob("set.*")}
    assert len(before) == 5
    for arguments, environment, status, words in (
        (("--volumes", "401"), {}, 2, "400 sequences"),
        (("--volumes", "2"), {**SMALL, "ZELVAN_TEST_CHARACTERS": "40000"}, 2, "at least 4"),
        (("--volumes", "2"), {"ZELVAN": "/bin/false", "ZELVANDIR": str(BUILD / "config")}, 1, "status 1"),
    ):  # fmt: skip
        assert folder.easy("build", *arguments, "text.fa", "set", environment=environment.items()) == status, folder.errors
        assert words in folder.errors and stays(folder, before), folder.errors
    command = [str(BUILD / "zelvan-easy"), "build", "--volumes", "2", "text.fa", "set"]
    full = subprocess.run(["sh", "-c", 'ulimit -f 40; exec "$@"', "sh", *command], cwd=folder.path, capture_output=True, check=False)
    assert full.returncode == 1 and b"could not be built" in full.stderr and b"too large" in full.stderr, full.stderr
    assert b"Traceback" not in full.stderr and stays(folder, before)
    engine = folder.file("zelvan", f"#!/bin/sh\ntouch {folder.path}/begun\nexec sleep 100\n")
    engine.chmod(0o755)
    environment = {"ZELVAN": str(engine), "ZELVANDIR": str(BUILD / "config")}
    interrupt(folder, command[1:], environment, (folder.path / "begun").exists, by=signal.SIGTERM)
    assert stays(folder, before)
    folder.file("text.fa", "")
    assert folder.easy("build", "--volumes", "2", "text.fa", "set") == 2 and stays(folder, before)
    folder.file("none.volumes", "")
    assert folder.easy("info", "none") == 2 and "damaged" in folder.errors
