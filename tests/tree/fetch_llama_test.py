"""Tests of tools/fetch-llama, with archives made on the spot and a network that is closed."""

import hashlib
import io
import os
import subprocess
import tarfile
import tempfile
import unittest
from pathlib import Path

TOOL = Path(__file__).resolve().parents[2] / "tools" / "fetch-llama"
OFFICIAL = "llama-b10437-bin-ubuntu-x64.tar.gz"
OWN = "llama-b10437-bin-linux-x64.tar.gz"


class FetchLlama(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.sums = self.folder / "sums"
        self.output = self.folder / "out"

    def archive(self, top="llama-b10437", links=(("libllama.so", "libllama.so.0"),), server=True):
        path = self.folder / "official.tar.gz"
        with tarfile.open(path, "w:gz") as archive:
            files = {"libllama.so.0": (b"library", 0o644), "LICENSE": (b"MIT", 0o664)}
            if server:
                files["llama-server"] = (b"#!/bin/sh\n", 0o775)
            for name, (content, mode) in files.items():
                member = tarfile.TarInfo(f"{top}/{name}")
                member.size, member.mode = len(content), mode
                member.uid, member.uname, member.mtime = 1001, "runner", 1_700_000_000
                archive.addfile(member, io.BytesIO(content))
            for name, target in links:
                member = tarfile.TarInfo(f"{top}/{name}")
                member.type, member.linkname = tarfile.SYMTYPE, target
                archive.addfile(member)
        return path

    def run_tool(self, *arguments, **environment):
        return subprocess.run(
            [TOOL, "--processor", "x64", "--output", self.output, "--sums", self.sums, *arguments],
            capture_output=True, text=True, timeout=60, check=False,
            env={**os.environ, **environment})

    def pin(self, archive):
        digest = hashlib.sha256(archive.read_bytes()).hexdigest()
        self.sums.write_text(f"{digest}  {OFFICIAL}\n", encoding="utf-8")

    def repack(self, **shape):
        archive = self.archive(**shape)
        self.pin(archive)
        return self.run_tool("--archive", archive)

    def test_repacks_into_one_folder_and_keeps_links(self):
        for top in ("llama-b10437", "build/bin", "."):
            ended = self.repack(top=top)
            self.assertEqual((ended.returncode, ended.stderr), (0, ""))
            self.assertEqual(ended.stdout, f"{self.output / OWN}\n")
            with tarfile.open(self.output / OWN) as archive:
                members = {member.name: member for member in archive}
                self.assertEqual(sorted(members),
                                 [f"llama-b10437/{name}" for name in
                                  ("LICENSE", "libllama.so", "libllama.so.0", "llama-server")])
                self.assertEqual(members["llama-b10437/libllama.so"].linkname, "libllama.so.0")
                self.assertEqual(members["llama-b10437/llama-server"].mode, 0o755)
                self.assertEqual(members["llama-b10437/LICENSE"].mode, 0o644)
                self.assertEqual({member.uid for member in members.values()}, {0})

    def test_system_tar_unpacks_the_result(self):
        self.repack()
        subprocess.run(["tar", "-xzf", self.output / OWN, "-C", self.folder], check=True)
        unpacked = self.folder / "llama-b10437"
        self.assertEqual((unpacked / "libllama.so").read_bytes(), b"library")
        self.assertTrue((unpacked / "libllama.so").is_symlink())
        self.assertTrue(os.access(unpacked / "llama-server", os.X_OK))

    def test_writes_the_same_bytes_each_time(self):
        self.repack()
        first = (self.output / OWN).read_bytes()
        self.repack()
        self.assertEqual((self.output / OWN).read_bytes(), first)

    def test_refuses_an_archive_with_another_sum(self):
        archive = self.archive()
        self.sums.write_text(f"{'0' * 64}  {OFFICIAL}\n", encoding="utf-8")
        ended = self.run_tool("--archive", archive)
        self.assertEqual(ended.returncode, 3)
        self.assertIn("is recorded", ended.stderr)
        self.assertFalse((self.output / OWN).exists())
        self.assertEqual(self.run_tool("--archive", archive, "--pin").returncode, 3)

    def test_refuses_an_archive_without_a_recorded_sum_until_it_is_pinned(self):
        archive = self.archive()
        self.sums.write_text("# none yet\n", encoding="utf-8")
        ended = self.run_tool("--archive", archive)
        self.assertEqual(ended.returncode, 3)
        self.assertIn(hashlib.sha256(archive.read_bytes()).hexdigest(), ended.stderr)
        self.assertEqual(self.run_tool("--archive", archive, "--pin").returncode, 0)
        self.assertEqual(self.run_tool("--archive", archive).returncode, 0)

    def test_refuses_links_that_lead_elsewhere(self):
        for target in ("/etc/passwd", "../x", "sub/x", ".."):
            ended = self.repack(links=(("link", target),))
            self.assertEqual(ended.returncode, 1, target)
            self.assertIn("leads to", ended.stderr)
            self.assertEqual(list(self.output.iterdir()), [])

    def test_refuses_an_archive_without_a_server(self):
        self.assertIn("0 files with the name llama-server", self.repack(server=False).stderr)

    def test_refuses_what_is_no_archive(self):
        archive = self.archive()
        archive.write_bytes(archive.read_bytes()[:60])
        self.pin(archive)
        ended = self.run_tool("--archive", archive)
        self.assertEqual(ended.returncode, 1)
        self.assertIn("can't be repacked", ended.stderr)
        self.assertEqual(list(self.output.iterdir()), [])

    def test_says_so_when_the_network_is_closed(self):
        closed = "http://127.0.0.1:9"  # nothing listens at the discard port
        ended = self.run_tool(https_proxy=closed, HTTPS_PROXY=closed)
        self.assertEqual(ended.returncode, 1)
        self.assertIn("the network is closed or the host is down", ended.stderr)
        self.assertFalse(self.output.exists())

    def test_wants_one_processor_for_one_archive(self):
        ended = subprocess.run([TOOL, "--processor", "all", "--archive", "x"], capture_output=True,
                               text=True, timeout=60, check=False)
        self.assertEqual(ended.returncode, 2)


if __name__ == "__main__":
    unittest.main()
