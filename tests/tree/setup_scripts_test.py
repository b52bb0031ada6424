#!/usr/bin/env python3
"""Tests ./run, ./test and bench/build in a copy of the tree's scripts, with recording stand-ins for the tools
that they call: the package manager, CMake, CTest and the program itself."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
UNPRIVILEGED = 65534

REAL_TOOLS = ("basename", "bash", "chown", "cut", "dirname", "env", "getent", "grep", "head", "id", "mkdir",
              "nproc", "rm", "sed", "sort", "stat", "stty", "timeout")

# Every stand-in writes its name and arguments into $FAKE/calls first.
RECORD = '#!/usr/bin/env bash\nprintf "%s\\n" "$(basename "$0") $*" >>"$FAKE/calls"\n'
STAND_INS = {
    "dpkg-query": RECORD + """
for name in "${@:3}"; do
    [[ -e $FAKE/missing && " $(<"$FAKE/missing") " == *" $name "* ]] || echo "ii =$name"
done
""",
    "apt-get": RECORD + """
[[ ! -e $FAKE/apt.out ]] || cat "$FAKE/apt.out" >&2
[[ $* != *install* || ! -e $FAKE/apt.fails ]] || exit 100
""",
    "cmake": RECORD + """
if [[ $1 == --build ]]; then
    folder=build/$3
    [[ ! -e $FAKE/build.out ]] || cat "$FAKE/build.out"
    [[ ! -e $FAKE/build.fails ]] || exit 1
    [[ -e $FAKE/no.program ]] && exit
    mkdir -p "$folder/bin"
    cp "$FAKE/program" "$folder/bin/zelvane-desk"
else
    folder=build/$2
    mkdir -p "$folder"
    [[ ! -e $FAKE/configure.fails ]] || { echo "CMake Error: no Qt" >&2; exit 1; }
    echo "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" >"$folder/CMakeCache.txt"
    echo >"$folder/build.ninja"
fi
""",
    "ctest": RECORD + "exit \"$(cat \"$FAKE/ctest.status\" 2>/dev/null || echo 0)\"\n",
    "xdpyinfo": RECORD + "[[ -e $FAKE/display ]]\n",
    "sudo": RECORD + """
[[ ! -e $FAKE/sudo.refuses ]] || exit 1
case $1 in
-n | -v) ;;
--) shift; "$@" ;;
esac
""",
}
PROGRAM = RECORD + """
printf '<%s>' "$@"
exit "$(cat "$FAKE/program.status" 2>/dev/null || echo 0)"
"""


class SetupScripts(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        base = Path(folder.name).resolve()
        self.tree, self.tools, self.fake = base / "tree", base / "tools", base / "fake"
        for made in (self.tree / "bench", self.tree / "tools", self.tools, self.fake):
            made.mkdir(parents=True)
        for name in ("run", "test", "bench/build", "CMakePresets.json", "tools/lib.sh",
                     "tools/packages.txt"):
            shutil.copy(ROOT / name, self.tree / name)
        self.script(self.tree / "tools/demo", RECORD)
        self.script(self.fake / "program", PROGRAM)
        for name, text in STAND_INS.items():
            self.script(self.tools / name, text)
        for name in (*REAL_TOOLS, "cat", "cp"):
            (self.tools / name).symlink_to(shutil.which(name))
        self.environment = {"PATH": str(self.tools), "FAKE": str(self.fake), "LC_ALL": "C.UTF-8",
                            "HOME": str(base)}

    @staticmethod
    def script(path, text):
        path.write_text(text)
        path.chmod(0o755)

    def given(self, **files):
        """Puts what the stand-ins go by in place: a dot in a name is written as an underscore."""
        for name, text in files.items():
            (self.fake / name.replace("_", ".")).write_text(text)

    def start(self, *command, user=None, **environment):
        result = subprocess.run(command, cwd=self.tree, env=self.environment | environment, user=user,
                                stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                start_new_session=True, timeout=30)
        self.said = result.stderr.splitlines()
        self.printed = result.stdout
        return result.returncode

    def calls(self, name):
        log = self.fake / "calls"
        lines = log.read_text().splitlines() if log.exists() else []
        return [line.removeprefix(name).strip() for line in lines if line.split()[0] == name]

    def as_ordinary_user(self):
        """An account for `start` that isn't root, with the tree in its hands."""
        if os.getuid() != 0:
            return None
        for path in (self.tree.parent, *self.tree.parent.rglob("*")):
            os.chown(path, UNPRIVILEGED, UNPRIVILEGED, follow_symlinks=False)
        return UNPRIVILEGED

    # -- packages

    def test_leaves_the_package_manager_alone_if_nothing_is_missing(self):
        self.assertEqual(self.start("./run", "--build-only"), 0)
        self.assertEqual(self.calls("apt-get"), [])
        self.assertEqual(self.said, ["==> Configuring (release)", "==> Building (release)"])

    def test_installs_exactly_what_is_missing(self):
        self.given(missing="ninja-build clang-19")
        self.assertEqual(self.start("./run", "--build-only"), 0)
        options = "--quiet --yes -o DPkg::Lock::Timeout=120 -o Dpkg::Use-Pty=0"
        self.assertEqual(self.calls("apt-get"), [
            f"{options} update",
            f"{options} install --no-install-recommends clang-19 ninja-build"])
        self.assertIn("==> Installing 2 packages: clang-19 ninja-build", self.said)

    def test_running_needs_no_packages_of_the_tests(self):
        self.given(missing="libgtest-dev xvfb")
        self.assertEqual(self.start("./run", "--build-only"), 0)
        self.assertEqual(self.calls("apt-get"), [])

    def test_each_failure_of_the_package_manager_is_one_sentence(self):
        log = self.tree / "build/setup.log"
        for output, sentence in {
            "Temporary failure resolving 'packages.example'\nE: Unable to locate package clang-19":
                f"run: the packages could not be fetched: is there a network connection? (see {log})",
            "E: Unable to locate package clang-19":
                "run: this system's package sources have no 'clang-19': they must be those of"
                " Debian 12 (section main).",
            "E: Package 'clang-19' has no installation candidate":
                "run: this system's package sources have no 'clang-19': they must be those of"
                " Debian 12 (section main).",
            "E: You don't have enough free space in /var/cache/apt/archives/.":
                f"run: there is not enough disk space for the packages (see {log}).",
            "E: Could not get lock /var/lib/dpkg/lock-frontend. It is held by process 1 (apt-get)":
                "run: another program is installing packages; wait for it to end, and start again.",
            "E: dpkg was interrupted, you must manually run 'dpkg --configure -a'":
                "run: an earlier installation was interrupted; run 'dpkg --configure -a' as root,"
                " and start again.",
            "E: something new":
                f"run: apt-get could not install the packages; see {log}.",
        }.items():
            with self.subTest(output):
                self.given(missing="clang-19", apt_out=output + "\n", apt_fails="")
                self.assertEqual(self.start("./run", "--build-only"), 1)
                self.assertEqual(self.said, ["==> Fetching the package lists",
                                             "==> Installing 1 packages: clang-19", sentence])
                self.assertEqual(self.calls("cmake"), [])

    def test_goes_on_if_a_package_source_that_is_not_needed_fails(self):
        self.given(missing="clang-19", apt_out="Err:1 Temporary failure resolving 'elsewhere'\n")
        self.assertEqual(self.start("./run", "--build-only"), 0)

    def test_says_so_on_another_system(self):
        (self.tools / "dpkg-query").unlink()
        self.assertEqual(self.start("./run", "--build-only"), 1)
        self.assertEqual(self.said, [
            "run: this is not a Debian system: install the counterparts of tools/packages.txt by"
            " hand, then use 'cmake --preset release && cmake --build --preset release'."])

    def test_says_so_if_there_is_no_way_to_become_root(self):
        (self.tools / "sudo").unlink()
        self.given(missing="clang-19 cmake")
        self.assertEqual(self.start("./run", "--build-only", user=self.as_ordinary_user()), 1)
        self.assertEqual(self.said, [
            "run: 2 packages are missing and there is no sudo: start this once as root."])

    def test_says_so_if_sudo_refuses(self):
        self.given(missing="clang-19 cmake", sudo_refuses="")
        self.assertEqual(self.start("./run", "--build-only", user=self.as_ordinary_user()), 1)
        self.assertEqual(self.said, [
            "run: 2 packages are missing and sudo refuses: start this once as root."])

    def test_installs_through_sudo_as_an_ordinary_user(self):
        self.given(missing="clang-19")
        self.assertEqual(self.start("./run", "--build-only", user=self.as_ordinary_user()), 0)
        self.assertEqual(len(self.calls("apt-get")), 2)

    def test_says_so_if_the_tree_cannot_be_written(self):
        user = self.as_ordinary_user()
        self.tree.chmod(0o555)
        self.addCleanup(self.tree.chmod, 0o755)
        self.assertEqual(self.start("./test", user=user), 1)
        self.assertEqual(self.said, [
            f"test: can't write to {self.tree}/build: it belongs to another user, or the disk is"
            " read-only."])

    # -- building

    def test_configures_once(self):
        self.start("./run", "--build-only")
        self.assertEqual(self.start("./run", "--build-only"), 0)
        self.assertEqual(self.said, ["==> Building (release)"])
        self.assertEqual([c for c in self.calls("cmake") if "--build" not in c], ["--preset release"])

    def test_configures_again_after_the_presets_changed(self):
        self.start("./run", "--build-only")
        os.utime(self.tree / "build/release/build.ninja", (0, 0))
        self.start("./run", "--build-only")
        self.assertIn("==> Configuring (release)", self.said)

    def test_starts_afresh_in_a_tree_that_was_moved(self):
        self.start("./run", "--build-only")
        self.tree = self.tree.rename(self.tree.parent / "elsewhere")
        self.assertEqual(self.start("./run", "--build-only"), 0)
        self.assertEqual([c for c in self.calls("cmake") if "--build" not in c],
                         ["--preset release", "--preset release --fresh"])

    def test_points_at_the_log_of_a_failed_configuration(self):
        self.given(configure_fails="")
        self.assertEqual(self.start("./run", "--build-only"), 1)
        self.assertEqual(self.said[1:], [
            "CMake Error: no Qt",
            f"run: configuring failed; see {self.tree}/build/release/configure.log."])

    def test_points_at_the_log_of_a_failed_build(self):
        self.given(build_out="[1/2] Building\nmain.cpp:1:1: error: no\nninja: stopped\n", build_fails="")
        self.assertEqual(self.start("./run", "--build-only"), 1)
        log = self.tree / "build/release/build.log"
        self.assertEqual(self.said[2:], [
            "main.cpp:1:1: error: no", "ninja: stopped", f"run: the build failed; see {log}."])
        self.assertEqual(log.read_text(), "[1/2] Building\nmain.cpp:1:1: error: no\nninja: stopped\n")
        self.assertEqual(self.calls("zelvane-desk"), [])

    def test_says_so_if_the_disk_is_full(self):
        self.given(build_out="fatal error: error writing: No space left on device\n", build_fails="")
        self.assertEqual(self.start("./run", "--build-only"), 1)
        self.assertEqual(self.said[-1], "run: the disk is full; building needs about 2 GB under"
                                        f" {self.tree}/build.")

    def test_says_so_if_there_is_no_program(self):
        self.given(no_program="", display="")
        self.assertEqual(self.start("./run", DISPLAY=":7"), 1)
        self.assertRegex(self.said[-1], "^run: the build made no program at .*/zelvane-desk; see ")

    # -- starting

    def test_starts_the_program_where_there_is_a_display(self):
        self.given(display="")
        self.assertEqual(self.start("./run", DISPLAY=":7"), 0)
        self.assertEqual(self.calls("zelvane-desk"), [""])
        self.assertEqual(self.calls("demo"), [])

    def test_hands_arguments_and_the_exit_status_through_and_prints_nothing_of_its_own(self):
        self.given(program_status="130")
        self.assertEqual(self.start("./run", "translate", "--to", "English (UK)", "two  words"), 130)
        self.assertEqual(self.printed, "<translate><--to><English (UK)><two  words>")

    def test_plays_the_demonstration_without_a_display(self):
        self.assertEqual(self.start("./run"), 0)
        self.assertEqual(self.said[0],
                         "==> There is no X display (DISPLAY is not set): showing the demonstration instead")
        self.assertEqual(self.calls("zelvane-desk"), [])
        self.assertEqual(self.calls("demo"),
                         [f"{self.tree}/build/release/bin/zelvane-desk {self.tree}/build/demo"])

    def test_plays_the_demonstration_if_the_display_does_not_answer(self):
        self.assertEqual(self.start("./run", DISPLAY=":7"), 0)
        self.assertEqual(self.said[0],
                         "==> The display :7 can't be reached: showing the demonstration instead")
        self.assertEqual(len(self.calls("demo")), 1)

    def test_the_demonstration_brings_its_own_desktop(self):
        self.given(missing="xvfb", display="")
        self.assertEqual(self.start("./run", "demo", "--slow", DISPLAY=":7"), 0)
        self.assertRegex(self.calls("apt-get")[1], " install --no-install-recommends xvfb$")
        self.assertEqual(self.calls("demo"),
                         [f"{self.tree}/build/release/bin/zelvane-desk {self.tree}/build/demo --slow"])

    def test_build_only_starts_nothing(self):
        self.given(display="")
        self.assertEqual(self.start("./run", "--build-only", DISPLAY=":7"), 0)
        self.assertEqual(self.calls("zelvane-desk") + self.calls("demo"), [])

    def test_help_does_nothing_else(self):
        for script in ("./run", "./test"):
            self.assertEqual(self.start(script, "--help"), 0)
            self.assertRegex(self.printed, rf"^Usage: {script} ")
        self.assertEqual(self.said, [])
        self.assertFalse((self.tree / "build").exists())

    # -- testing

    def test_hands_arguments_to_ctest(self):
        self.assertEqual(self.start("./test", "-R", "a b"), 0)
        self.assertRegex(self.calls("ctest")[0], r"^--preset dev --parallel \d+ -R a b$")

    def test_runs_the_sanitizers(self):
        self.assertEqual(self.start("./test", "--asan"), 0)
        self.assertRegex(self.calls("ctest")[0], r"^--preset asan --parallel \d+$")
        self.assertIn("--preset asan", self.calls("cmake"))

    def test_fails_if_a_test_fails(self):
        self.given(ctest_status="8")
        self.assertEqual(self.start("./test"), 8)

    # -- measuring

    def test_installs_what_measures_and_builds_a_release_with_it(self):
        self.given(missing="libbenchmark-dev sqlite3 libgtest-dev")
        self.assertEqual(self.start("bench/build"), 0)
        self.assertRegex(self.calls("apt-get")[1],
                         " install --no-install-recommends libbenchmark-dev sqlite3$")
        self.assertIn("--preset bench", self.calls("cmake"))

    # -- under sudo

    @unittest.skipUnless(os.getuid() == 0, "only root can give up its rights")
    def test_goes_on_as_the_owner_of_the_tree_under_sudo(self):
        user = self.as_ordinary_user()
        (self.tools / "setpriv").symlink_to(shutil.which("setpriv"))
        self.given(program_status="0")
        self.script(self.fake / "program", RECORD + "id -u\n")
        status = self.start("./run", "defaults", "list", SUDO_UID=str(user), SUDO_GID=str(user),
                            SUDO_USER="nobody")
        self.assertEqual((status, self.printed), (0, f"{user}\n"))
        self.assertEqual((self.tree / "build/release/bin/zelvane-desk").stat().st_uid, user)


if __name__ == "__main__":
    unittest.main()
