"""Many queries: splitting, single searches that are taken up again, GNU parallel and Snakemake (where installed)."""

import os
import pathlib
import shutil
import subprocess
import sys
import unittest

SOURCE = pathlib.Path(os.environ["ZELVAN_SOURCE"])
WORKFLOWS = SOURCE / "workflows"
sys.path.insert(0, str(SOURCE / "tests" / "cli"))

import zelvan_cli  # noqa: E402


class WorkflowTest(zelvan_cli.TestCase):
    def setUp(self):
        super().setUp()
        self.configure(defaults=None)
        tools = self.work.parent / "bin"
        tools.mkdir()
        (tools / "zelvan").symlink_to(zelvan_cli.PROGRAM)
        for tool in [*(SOURCE / "filters").glob("zelvan2*"), *WORKFLOWS.glob("zelvan_*")]:
            (tools / tool.name).symlink_to(tool)
        self.environment = dict(os.environ, PATH=f"{tools}:{os.environ['PATH']}", ZELVANDIR=str(self.config),
                                HOME=str(self.work), XDG_CACHE_HOME=str(self.work))  # fmt: skip
        for name in ("engb", "mvk", "hxa7"):
            with open(self.work / "all.fasta", "ab") as together:
                together.write((zelvan_cli.EXAMPLES / f"{name}.fasta").read_bytes())

    def shell(self, command, **more):
        done = subprocess.run(["bash", "-c", command], cwd=self.work, env=self.environment, capture_output=True,
                              text=True, check=False, **more)  # fmt: skip
        return done.returncode, done.stdout, done.stderr

    def prepare(self):
        """Queries in queries/, the database in the working directory."""
        self.assertEqual(self.shell("zelvan_split_queries all.fasta queries")[:2], (0, "3 queries in queries\n"))
        status, _, errors = self.shell(f"zelvan -mode 99 -d {zelvan_cli.EXAMPLES}/uniprot_sample.fasta -bdb sample")
        self.assertEqual(status, 0, errors)

    def reports(self, folder="reports"):
        return {path.name: path.stat().st_mtime_ns for path in (self.work / folder).iterdir()}

    def test_every_sequence_gets_a_file(self):
        self.file("many.fasta", ">sp|A/1 x\nMK\n>sp|A|1\nMV\n>\nMW\n>..\nMM\n")
        self.assertEqual(self.shell("zelvan_split_queries many.fasta out")[0], 0)
        files = {path.name: path.read_text() for path in (self.work / "out").iterdir()}
        self.assertEqual(files, {"sp_A_1.fasta": ">sp|A/1 x\nMK\n", "sp_A_1_2.fasta": ">sp|A|1\nMV\n",
                                 "query.fasta": ">\nMW\n", "query_2.fasta": ">..\nMM\n"})  # fmt: skip
        self.file("none.fasta", "MKV\n")
        self.assertIn("must be a FASTA file", self.shell("zelvan_split_queries none.fasta out")[2])
        self.assertIn("nowhere: No such file", self.shell("zelvan_split_queries nowhere out")[2])

    def test_a_report_is_complete_or_not_there(self):
        self.prepare()
        search = "zelvan_search_query queries/sp_Q600K7_ENGB_MYCH2.fasta reports/r.report -niter 1 -bdb "
        self.assertEqual(self.shell(search + "nowhere")[0], 1)
        self.assertEqual(self.reports(), {})
        self.assertEqual(self.shell(search + "sample"), (0, "", ""))
        before = self.reports()
        self.assertEqual(list(before), ["r.report"])
        self.assertEqual(self.shell(search + "sample"), (0, "", ""))
        self.assertEqual(self.reports(), before)

    @unittest.skipUnless(shutil.which("parallel"), "GNU parallel is not installed")
    def test_parallel_goes_on_with_what_is_missing(self):
        self.prepare()
        command = "ls queries/*.fasta | parallel -j 2 zelvan_search_query {} reports/{/.}.report -niter 1 -bdb sample"
        status, _, errors = self.shell(command)
        self.assertEqual(status, 0, errors)
        before = self.reports()
        self.assertEqual(len(before), 3)
        lost = sorted(before)[1]
        (self.work / "reports" / lost).unlink()
        self.assertEqual(self.shell(command)[0], 0)
        after = self.reports()
        self.assertEqual({name for name in after if after[name] != before[name]}, {lost})

    @unittest.skipUnless(shutil.which("snakemake"), "Snakemake is not installed")
    def test_snakemake_collects_and_goes_on_after_a_failure(self):
        self.prepare()
        for name in ("Snakefile", "config.yaml"):
            shutil.copy(WORKFLOWS / name, self.work)
        shutil.copy(zelvan_cli.EXAMPLES / "uniprot_sample.fasta", self.work / "proteins.fasta")
        broken = self.file("queries/broken.fasta", "no sequence")
        run = "snakemake --cores 2 --keep-going --nocolor --config options='-niter 1'"
        self.assertNotEqual(self.shell(run)[0], 0)
        before = self.reports("results/reports")
        self.assertEqual(len(before), 3)
        self.assertFalse((self.work / "results" / "hits.tsv").exists())
        broken.unlink()
        status, _, errors = self.shell(run)
        self.assertEqual(status, 0, errors)
        self.assertEqual(self.reports("results/reports"), before)
        lines = (self.work / "results" / "hits.tsv").read_text().splitlines()
        self.assertEqual(sum(line.startswith("# Fields: query id, subject id") for line in lines), 3)
        self.assertEqual(len({line.split("\t")[0] for line in lines if line[0] != "#"}), 3)


if __name__ == "__main__":
    unittest.main()
