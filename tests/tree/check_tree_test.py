#!/usr/bin/env python3
"""Tests tools/check-tree on small trees, each with one violation."""

import subprocess
import tempfile
import unittest
from pathlib import Path

CHECKER = Path(__file__).resolve().parents[2] / "tools" / "check-tree"
FORMAT = "BasedOnStyle: LLVM\nIndentWidth: 4\n"

GOOD_TREE = {
    ".clang-format": FORMAT,
    "Zelvane/foundation/CMakeLists.txt":
        "zelvane_subsystem(zelvane_foundation SOURCES Clock.cpp Clock.h LINK Qt6::Core)\n",
    "Zelvane/foundation/Clock.h": "#pragma once\nint now();\n",
    "Zelvane/foundation/Clock.cpp": '#include "foundation/Clock.h"\nint now() { return 1; }\n',
    "Zelvane/settings/CMakeLists.txt":
        "zelvane_subsystem(zelvane_settings\n    SOURCES Store.h # the store\n    LINK zelvane_foundation)\n",
    "Zelvane/settings/Store.h": '#pragma once\n#include "foundation/Clock.h"\n',
    "Zelvane/pipeline/CMakeLists.txt":
        "zelvane_subsystem(zelvane_pipeline_types SOURCES Request.h LINK zelvane_settings)\n"
        "zelvane_subsystem(zelvane_pipeline SOURCES Dispatch.h LINK zelvane_online)\n",
    "Zelvane/pipeline/Request.h": "#pragma once\n",
    "Zelvane/pipeline/Dispatch.h": '#pragma once\n#include "online/Client.h"\n',
    "Zelvane/online/CMakeLists.txt":
        "zelvane_subsystem(zelvane_online SOURCES Client.h LINK zelvane_pipeline_types)\n",
    "Zelvane/online/Client.h": '#pragma once\n#include "pipeline/Request.h"\n',
}


class CheckTree(unittest.TestCase):
    def check(self, **changes):
        """The checker's status and lines for the good tree with these files put in."""
        with tempfile.TemporaryDirectory() as folder:
            for name, text in (GOOD_TREE | changes.pop("files", {})).items():
                if text is not None:
                    path = Path(folder, name)
                    path.parent.mkdir(parents=True, exist_ok=True)
                    path.write_text(text)
            result = subprocess.run([CHECKER, folder], capture_output=True, text=True)
            self.assertEqual(result.stderr, "")
            return result.returncode, result.stdout.splitlines()

    def test_says_nothing_of_a_good_tree(self):
        self.assertEqual(self.check(), (0, []))

    def test_finds_an_include_of_a_higher_folder(self):
        text = '#pragma once\n#include "settings/Store.h"\nint now();\n'
        self.assertEqual(self.check(files={"Zelvane/foundation/Clock.h": text}), (1, [
            'Zelvane/foundation/Clock.h:2: zelvane_foundation must not include "settings/Store.h"'
            ' of zelvane_settings']))

    def test_tells_the_two_targets_of_the_pipeline_apart(self):
        text = '#pragma once\n#include "pipeline/Dispatch.h"\n'
        self.assertEqual(self.check(files={"Zelvane/online/Client.h": text}), (1, [
            'Zelvane/online/Client.h:2: zelvane_online must not include "pipeline/Dispatch.h"'
            ' of zelvane_pipeline']))

    def test_finds_an_include_of_a_file_that_no_target_lists(self):
        text = '#pragma once\n#include "foundation/Gone.h"\n'
        self.assertEqual(self.check(files={"Zelvane/settings/Store.h": text}), (1, [
            'Zelvane/settings/Store.h:2: no target lists "foundation/Gone.h"']))

    def test_finds_a_link_against_the_arrows(self):
        text = "zelvane_subsystem(zelvane_settings SOURCES Store.h LINK zelvane_foundation zelvane_online)\n"
        self.assertEqual(self.check(files={"Zelvane/settings/CMakeLists.txt": text}), (1, [
            "Zelvane/settings/CMakeLists.txt: zelvane_settings must not link zelvane_online"]))

    def test_finds_windows_below_the_interface(self):
        text = GOOD_TREE["Zelvane/settings/CMakeLists.txt"] + \
            "target_link_libraries(zelvane_settings PRIVATE Qt6::Widgets)\n"
        self.assertEqual(self.check(files={"Zelvane/settings/CMakeLists.txt": text}), (1, [
            "Zelvane/settings/CMakeLists.txt: zelvane_settings must not link Qt6::Widgets"]))

    def test_finds_a_target_without_a_place(self):
        self.assertEqual(self.check(files={
            "Zelvane/extra/CMakeLists.txt": "zelvane_subsystem(zelvane_extra SOURCES Extra.h)\n",
            "Zelvane/extra/Extra.h": "#pragma once\n"}), (1, [
            "Zelvane/extra/Extra.h: its target zelvane_extra has no place in the table of"
            " tools/check-tree"]))

    def test_finds_a_source_that_is_not_listed(self):
        self.assertEqual(self.check(files={"Zelvane/settings/Other.cpp": "int other();\n"}),
                         (1, ["Zelvane/settings/Other.cpp: no CMakeLists.txt lists it"]))

    def test_finds_a_file_that_is_not_formatted(self):
        status, lines = self.check(files={"Zelvane/foundation/Clock.h": "#pragma once\nint  now( );\n"})
        self.assertEqual(status, 1)
        self.assertRegex(lines[0], r"^Zelvane/foundation/Clock\.h:2:.*-Wclang-format-violations")

    def test_finds_a_header_that_can_be_read_twice(self):
        self.assertEqual(self.check(files={"Zelvane/foundation/Clock.h": "int now();\n"}),
                         (1, ["Zelvane/foundation/Clock.h: has no #pragma once"]))

    def test_finds_blanks_at_the_end_of_lines_and_a_missing_last_newline(self):
        self.assertEqual(self.check(files={"notes.md": "one \ntwo"}),
                         (1, ["notes.md: must end with one newline", "notes.md:1: ends with a blank"]))

    def test_finds_a_link_to_a_file_that_is_not_there(self):
        text = "[one](docs/a.md#part) ![two](docs/b.png) [three](https://example.org/c) [four](#here)\n"
        self.assertEqual(self.check(files={"README.md": text, "docs/a.md": "[up](../README.md)\n"}),
                         (1, ["README.md: there is no docs/b.png"]))

    def test_leaves_binary_files_alone(self):
        self.assertEqual(self.check(files={"picture.png": "\0 \n \n"}), (0, []))

    def test_leaves_the_bytes_of_test_data_alone(self):
        self.assertEqual(self.check(files={"fuzz/corpus/one": "{ ", "tests/data/two": "a \n\n"}), (0, []))

    def test_finds_what_shellcheck_finds(self):
        status, lines = self.check(files={"tools/play": "#!/bin/bash\nrm $1/x\n"})
        self.assertEqual(status, 1)
        self.assertRegex(lines[0], r"^tools/play:2:.*SC2086")

    def test_looks_at_tracked_files_only_where_there_is_a_repository(self):
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, ".clang-format").write_text(FORMAT)
            subprocess.run(["git", "init", "--quiet", folder], check=True)
            Path(folder, "scratch.txt").write_text("unfinished")
            result = subprocess.run([CHECKER, folder], capture_output=True, text=True)
            self.assertEqual((result.returncode, result.stdout), (0, ""))
            subprocess.run(["git", "-C", folder, "add", "scratch.txt"], check=True)
            result = subprocess.run([CHECKER, folder], capture_output=True, text=True)
            self.assertEqual((result.returncode, result.stdout),
                             (1, "scratch.txt: must end with one newline\n"))


if __name__ == "__main__":
    unittest.main()
