#!/usr/bin/env python3
"""Mutation check of the engine: how many small faults do the engine and CLI tests catch?

Applies one small change at a time to the engine's sources (flip a comparison, swap && and ||,
drop a statement, change a constant by one, return early, negate a condition), chosen with a
fixed seed from a fixed list of files, rebuilds incrementally, runs the engine and CLI tests
(the engine_tests binary, which runs sysmend-cli for the CLI tests) and records each mutant as
killed, survived, timed-out or did-not-compile, with the change shown.

    scripts/mutate.py [--seed 1] [--count 150] [--report tests/mutation/report.txt]
                      [--source DIR] [--build DIR] [--list]

--source is the tree to mutate (default: this checkout); it must not be edited meanwhile, so
to keep working, point it at a second worktree (git worktree add ../sysmend-mutate HEAD).
Every mutated file is restored afterwards, also on Ctrl-C or a kill signal; a file left behind
by a killed run (power cut, SIGKILL) is restored by the next run from its .mutate-orig copy.
The same seed on the same sources gives the same mutants, so two suites can be compared.
Not part of CI: 150 mutants take about 45 minutes on 2 cores.
"""
import argparse
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))

# The engine files whose rules the tests must pin: check marks, removal, the scanners, the
# readers and the helpers they share. Fixed, so that reports stay comparable.
FILES = [
    "src/engine/model/na_object.cpp",
    "src/engine/model/na_fileobj.cpp",
    "src/engine/model/na_group_obj.cpp",
    "src/engine/model/tool_records.cpp",
    "src/engine/app/check_summary.cpp",
    "src/engine/app/na_category_obj.cpp",
    "src/engine/adware/groups_removal.cpp",
    "src/engine/adware/adware_scan.cpp",
    "src/engine/adware/browser_extensions.cpp",
    "src/engine/adware/signature_database.cpp",
    "src/engine/adware/signature_lint.cpp",
    "src/engine/adware/na_cipher.cpp",
    "src/engine/crashes/crash_scan.cpp",
    "src/engine/startup/startup_scan.cpp",
    "src/engine/appviewer/app_information.cpp",
    "src/engine/appviewer/app_listing.cpp",
    "src/engine/appviewer/code_signature.cpp",
    "src/engine/network/firewall.cpp",
    "src/engine/tools/file_manager.cpp",
    "src/engine/tools/na_tools.cpp",
    "src/engine/platform/path.cpp",
    "src/engine/platform/volume.cpp",
    "src/engine/platform/walker.cpp",
    "src/engine/platform/app_index.cpp",
    "src/engine/platform/plist_binary.cpp",
    "src/engine/platform/plist_xml.cpp",
    "src/engine/platform/keyed_archive.cpp",
    "src/engine/platform/uti.cpp",
]

SWAPS = [  # (kind, pattern, replacement); operators as clang-format spaces them
    ("flip comparison", r" == ", " != "),
    ("flip comparison", r" != ", " == "),
    ("flip comparison", r" < ", " >= "),
    ("flip comparison", r" >= ", " < "),
    ("flip comparison", r" > ", " <= "),
    ("flip comparison", r" <= ", " > "),
    ("swap && and ||", r" && ", " || "),
    ("swap && and ||", r" \|\| ", " && "),
    ("return early", r"\breturn true;", "return false;"),
    ("return early", r"\breturn false;", "return true;"),
    ("return early", r"\bcontinue;", "break;"),
]
SKIP_LINE = re.compile(r"^\s*(#|//|\*|/\*|template\b|static_assert\b|using\b|namespace\b)")
STATEMENT = re.compile(r"^\s+(?!return\b|case\b|default\b|break;|continue;|[}{])[^;{}]*\S.*;\s*$")
NUMBER = re.compile(r"(?<![\w.'])(\d+)(?![\w.'])")
CONDITION = re.compile(r"\b(if|while) \(")


def closing_paren(line, start):
    depth = 0
    for i in range(start, len(line)):
        if line[i] == "(":
            depth += 1
        elif line[i] == ")":
            depth -= 1
            if depth == 0:
                return i
    return -1


def candidates(path, lines):
    """Every mutant of one file as (file, line index, kind, new line)."""
    found = []
    in_block_comment = False
    for n, line in enumerate(lines):
        stripped = line.strip()
        if in_block_comment:
            in_block_comment = "*/" not in stripped
            continue
        if stripped.startswith("/*"):
            in_block_comment = "*/" not in stripped
            continue
        if not stripped or SKIP_LINE.match(line):
            continue
        code = line.split("//", 1)[0] if '"' not in line else line
        for kind, pattern, replacement in SWAPS:
            for m in re.finditer(pattern, code):
                found.append((path, n, kind, line[: m.start()] + replacement + line[m.end():]))
        if '"' not in line and "[" not in line and "{" not in stripped[-1:]:
            for m in NUMBER.finditer(code):
                value = int(m.group(1))
                found.append((path, n, "constant by one",
                              line[: m.start()] + str(value + 1) + line[m.end():]))
        for m in CONDITION.finditer(code):
            open_at = m.end() - 1
            close_at = closing_paren(line, open_at)
            if close_at < 0:
                continue
            inner = line[open_at + 1: close_at]
            found.append((path, n, "negate condition",
                          line[: open_at + 1] + "!(" + inner + ")" + line[close_at:]))
        if STATEMENT.match(line) and not stripped.endswith(",") and "=" in stripped:
            indent = line[: len(line) - len(line.lstrip())]
            found.append((path, n, "drop statement", indent + ";  // dropped\n"))
        elif STATEMENT.match(line) and stripped.endswith(");"):
            indent = line[: len(line) - len(line.lstrip())]
            found.append((path, n, "drop statement", indent + ";  // dropped\n"))
    return found


class Restorer:
    """Keeps the pristine text of the file being mutated and puts it back on every exit."""

    def __init__(self):
        self.path = None

    def mutate(self, path, text):
        backup = path + ".mutate-orig"
        shutil.copy2(path, backup)
        self.path = path
        with open(path, "w") as f:
            f.write(text)

    def restore(self):
        if self.path:
            put_back(self.path)
            self.path = None


def put_back(path):
    """Moves the pristine copy back and makes it newer than the mutant's object file: the copy
    keeps the original's old time stamp, and the build would otherwise keep the mutant."""
    os.replace(path + ".mutate-orig", path)
    os.utime(path, None)


def restore_leftovers(source):
    for rel in FILES:
        backup = os.path.join(source, rel) + ".mutate-orig"
        if os.path.exists(backup):
            print(f"restoring {rel} left mutated by an earlier run", file=sys.stderr)
            put_back(os.path.join(source, rel))


def run(cmd, timeout, **kw):
    try:
        return subprocess.run(cmd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              timeout=timeout, text=True, **kw).returncode
    except subprocess.TimeoutExpired:
        return "timeout"


def run_tests(build, timeout):
    """Both cores: the suite in two shards. Non-zero (or a time-out) in either kills."""
    binary = os.path.join(build, "tests", "engine_tests")
    procs = []
    for shard in range(2):
        env = dict(os.environ, GTEST_TOTAL_SHARDS="2", GTEST_SHARD_INDEX=str(shard))
        procs.append(subprocess.Popen([binary, "--gtest_fail_fast", "--gtest_brief=1"],
                                      stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                      env=env, cwd=build, start_new_session=True))
    deadline = time.monotonic() + timeout
    outcome = 0
    for p in procs:
        try:
            code = p.wait(timeout=max(0.1, deadline - time.monotonic()))
            outcome = outcome or code
        except subprocess.TimeoutExpired:
            outcome = "timeout"
    for p in procs:
        if p.poll() is None:
            os.killpg(p.pid, signal.SIGKILL)
            p.wait()
    return outcome


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--count", type=int, default=150)
    parser.add_argument("--source", default=ROOT)
    parser.add_argument("--build", default=None)
    parser.add_argument("--report", default=None)
    parser.add_argument("--timeout", type=int, default=60,
                        help="seconds per test run; a mutant that runs longer is recorded as "
                        "timed-out: it counts as caught, but is shown apart, since a run on a "
                        "loaded machine can outlast it too")
    parser.add_argument("--list", action="store_true", help="print the mutants and stop")
    args = parser.parse_args()
    source = os.path.abspath(args.source)
    build = os.path.abspath(args.build or os.path.join(source, "build", "mutate"))
    restore_leftovers(source)

    pool = []
    for rel in FILES:
        with open(os.path.join(source, rel)) as f:
            pool += candidates(rel, f.readlines())
    random.Random(args.seed).shuffle(pool)
    chosen = pool[: args.count]
    if args.list:
        for rel, n, kind, new in chosen:
            print(f"{rel}:{n + 1}: {kind}: {new.strip()}")
        return 0

    restorer = Restorer()
    interrupted = []

    def on_signal(signum, _frame):
        restorer.restore()
        interrupted.append(signum)
        sys.exit(128 + signum)

    signal.signal(signal.SIGINT, on_signal)
    signal.signal(signal.SIGTERM, on_signal)

    configure = ["cmake", "-S", source, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                 "-DSYSMEND_BUILD_GUI=OFF", "-DSYSMEND_BUILD_BENCH=OFF"]
    if shutil.which("ccache"):
        configure.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
    build_cmd = ["cmake", "--build", build, "--target", "engine_tests", "sysmend-cli", "--", "-j2"]
    if run(configure, 600) != 0 or run(build_cmd, 3600) != 0:
        print("mutate: the unchanged sources do not build", file=sys.stderr)
        return 2
    clean_start = time.monotonic()
    if run_tests(build, args.timeout) != 0:
        print("mutate: the tests fail (or time out) on the unchanged sources", file=sys.stderr)
        return 2
    print(f"unchanged sources: tests pass in {time.monotonic() - clean_start:.0f} s", flush=True)

    results = []
    started = time.monotonic()
    report_lines = []
    try:
        for i, (rel, n, kind, new) in enumerate(chosen, 1):
            path = os.path.join(source, rel)
            with open(path) as f:
                lines = f.readlines()
            old = lines[n]
            lines[n] = new
            restorer.mutate(path, "".join(lines))
            try:
                if run(build_cmd, 900) != 0:
                    outcome = "did-not-compile"
                else:
                    code = run_tests(build, args.timeout)
                    outcome = {0: "survived", "timeout": "timed-out"}.get(code, "killed")
            finally:
                restorer.restore()
            results.append(outcome)
            line = (f"{outcome:15} {rel}:{n + 1} {kind}\n    - {old.strip()}\n"
                    f"    + {new.strip()}")
            report_lines.append(line)
            print(f"[{i}/{len(chosen)} {time.monotonic() - started:6.0f}s] {line}", flush=True)
    finally:
        restorer.restore()
        if not interrupted:
            run(build_cmd, 900)  # leave the build matching the sources; not when told to stop

    killed = results.count("killed")
    survived = results.count("survived")
    timed_out = results.count("timed-out")
    broken = results.count("did-not-compile")
    compiled = killed + survived + timed_out
    score = 100.0 * (killed + timed_out) / compiled if compiled else 0.0
    summary = (f"seed {args.seed}, {len(results)} mutants: {killed} killed, {timed_out} timed out "
               f"(a hang: caught by the time-out), {survived} survived, {broken} did not compile; "
               f"score {score:.1f}% of the mutants that compiled; "
               f"{time.monotonic() - started:.0f} s")
    print(summary)
    if args.report:
        with open(args.report, "w") as f:
            f.write(summary + "\n\nSurvivors first, then the rest.\n\n")
            order = {"survived": 0, "timed-out": 1, "killed": 2, "did-not-compile": 3}
            for line in sorted(report_lines, key=lambda l: order[l.split()[0]]):
                f.write(line + "\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
