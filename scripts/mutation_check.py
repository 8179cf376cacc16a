#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Mutation check: how many deliberate faults the test suite catches.

Each mutant replaces one exact snippet in one source file (scripts/mutants.json). The check
runs in a git worktree of its own, with its own build folder, so that the main checkout and
its build folders are never touched:

  1. the worktree is made (or reset) at the commit, configured and built once, and the whole
     suite must pass there (otherwise the check stops and names the failing tests);
  2. for each mutant: the snippet is replaced (it must occur exactly once, else the mutant is
     "stale"), the build is brought up to date (a failed build is "does not compile"), the
     suite runs with --stop-on-failure, and the file is put back with git checkout, also on
     Ctrl-C. A first failure is run once more on its own; a failure that does not come back
     is taken for noise and the suite runs once again.

Usage:
  scripts/mutation_check.py [--commit REF] [--dir DIR] [--only ID,...] [--jobs N] [--out FILE.md]
                            [--patch FILE.patch] [--reuse]
  scripts/mutation_check.py --list          the mutants, one a line
  scripts/mutation_check.py --check-only    whether each snippet occurs exactly once; no build

--patch applies a patch to the worktree after it is reset, for a commit that does not build as
committed; the table names it, and a mutated file that the patch touches gets it back after
the mutant.

With --out, the results are also kept as JSON beside the table (FILE.json); --reuse takes from
there the verdict of every mutant that is unchanged since, at the same commit and patch, and
checks only the rest (the unmutated build and suite still run first).

Exit status: 0 when every mutant was applied and judged (caught or survived); 1 when a mutant
is stale, does not compile or could not be judged, or when the suite fails before any
mutation; 2 for bad arguments.
"""

import argparse
import datetime
import hashlib
import json
import os
import re
import signal
import subprocess
import sys
import time

SCRIPT_DIR = os.path.dirname(os.path.abspath(__file__))
DEFAULT_REPO = os.path.dirname(SCRIPT_DIR)
DEFAULT_DIR = "/tmp/quarbel-mutants"
DEFAULT_MUTANTS = os.path.join(SCRIPT_DIR, "mutants.json")
TEST_TIMEOUT = 180

CAUGHT, SURVIVED, NO_BUILD, STALE, ERROR = "caught", "survived", "does not compile", "stale", "error"


def log(message):
    stamp = datetime.datetime.now().strftime("%H:%M:%S")
    print(f"[{stamp}] {message}", flush=True)


def fail(message, code=1):
    log(f"mutation check: {message}")
    sys.exit(code)


def git(*args, cwd, check=True):
    result = subprocess.run(["git", "-C", cwd, *args], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                            text=True)
    if check and result.returncode != 0:
        fail(f"git {' '.join(args)} in {cwd} failed:\n{result.stdout.strip()}")
    return result


def run_logged(command, log_path, cwd=None):
    """Runs `command` with its output in `log_path`; returns (exit status, output, seconds)."""
    start = time.monotonic()
    with open(log_path, "w", encoding="utf-8", errors="replace") as out:
        out.write("$ " + " ".join(command) + "\n")
        out.flush()
        status = subprocess.run(command, cwd=cwd, stdout=out, stderr=subprocess.STDOUT,
                                stdin=subprocess.DEVNULL).returncode
    seconds = time.monotonic() - start
    with open(log_path, encoding="utf-8", errors="replace") as text:
        return status, text.read(), seconds


# ---- The mutants

def load_mutants(path):
    try:
        with open(path, encoding="utf-8") as source:
            data = json.load(source)
    except (OSError, ValueError) as error:
        fail(f"cannot read the mutants from {path}: {error}", 2)
    mutants = data["mutants"] if isinstance(data, dict) else data
    seen = set()
    for mutant in mutants:
        for key in ("id", "layer", "file", "fault", "find", "replace"):
            if not isinstance(mutant.get(key), str):
                fail(f"mutant {mutant.get('id', '?')} in {path} has no text for '{key}'", 2)
        if mutant["id"] in seen:
            fail(f"mutant id {mutant['id']} appears twice in {path}", 2)
        if mutant["find"] == mutant["replace"] or not mutant["find"]:
            fail(f"mutant {mutant['id']} changes nothing", 2)
        seen.add(mutant["id"])
    return mutants


def snippet_count(worktree, mutant):
    path = os.path.join(worktree, mutant["file"])
    if not os.path.isfile(path):
        return None
    with open(path, encoding="utf-8") as source:
        return source.read().count(mutant["find"])


def stale_reason(count):
    return "file not found" if count is None else f"snippet found {count} times"


def apply_mutant(worktree, mutant):
    path = os.path.join(worktree, mutant["file"])
    with open(path, encoding="utf-8") as source:
        text = source.read()
    with open(path, "w", encoding="utf-8") as target:
        target.write(text.replace(mutant["find"], mutant["replace"], 1))


def patched_files(patch):
    """The files a patch changes, as paths in the repository."""
    if not patch:
        return set()
    with open(patch, encoding="utf-8", errors="replace") as text:
        return {line[6:].strip() for line in text if line.startswith("+++ b/")}


def apply_patch(worktree, patch, only_file=None):
    arguments = ["apply", "--whitespace=nowarn"]
    if only_file:
        arguments.append(f"--include={only_file}")
    git(*arguments, patch, cwd=worktree)


def restore(worktree, mutant, patch=None):
    git("checkout", "--", mutant["file"], cwd=worktree)
    if mutant["file"] in patched_files(patch):
        apply_patch(worktree, patch, mutant["file"])


# ---- The worktree and its build

def prepare_worktree(repo, worktree, ref):
    commit = git("rev-parse", "--verify", f"{ref}^{{commit}}", cwd=repo).stdout.strip()
    if os.path.isdir(worktree):
        probe = git("rev-parse", "--git-common-dir", cwd=worktree, check=False)
        ours = git("rev-parse", "--git-common-dir", cwd=repo).stdout.strip()
        theirs = probe.stdout.strip()
        if probe.returncode != 0 or os.path.realpath(os.path.join(worktree, theirs)) != os.path.realpath(
                os.path.join(repo, ours)):
            fail(f"{worktree} exists and is not a worktree of {repo}; choose another --dir", 2)
        if os.path.realpath(git("rev-parse", "--show-toplevel", cwd=worktree).stdout.strip()) == \
                os.path.realpath(repo):
            fail(f"{worktree} is the main checkout itself; choose another --dir", 2)
        log(f"reusing the worktree {worktree} at {commit[:12]}")
        git("reset", "--hard", "--quiet", cwd=worktree)  # a mutant left behind by a hard kill
        git("checkout", "--detach", "--quiet", commit, cwd=worktree)
        git("reset", "--hard", "--quiet", cwd=worktree)
    else:
        log(f"making the worktree {worktree} at {commit[:12]}")
        git("worktree", "prune", cwd=repo)
        git("worktree", "add", "--detach", worktree, commit, cwd=repo)
    subject = git("log", "-1", "--format=%s", commit, cwd=repo).stdout.strip()
    return commit, subject


def configure(worktree, build, logs):
    if os.path.isfile(os.path.join(build, "CMakeCache.txt")):
        return
    log(f"configuring {build}")
    status, _, _ = run_logged(["cmake", "-S", worktree, "-B", build, "-G", "Ninja",
                               "-DCMAKE_BUILD_TYPE=RelWithDebInfo"], os.path.join(logs, "configure.log"))
    if status != 0:
        fail(f"configuring failed: see {os.path.join(logs, 'configure.log')}")


def build_tree(build, jobs, log_path):
    return run_logged(["cmake", "--build", build, "-j", str(jobs)], log_path)


def discovery_failure(output):
    """The test program whose listing failed while the build registered its tests, if any."""
    if "Error running test executable" not in output:
        return None
    found = re.search(r"Path: '([^']+)'", output)
    return os.path.basename(found.group(1)) if found else "a test program"


# A parameterised GoogleTest case is registered as "Suite/Case.Test/Name  # GetParam() = Name":
# the name is the first word, the comment after it is skipped.
FAILED_LINE = re.compile(r"Test\s+#\d+: (\S+)(?:\s+#.*?)? \.*\s*\*\*\*(\w[\w :]*?)(?:\s{2,}|\s+[\d.]+ sec|$)")


def failed_tests(output):
    """(name, how) for each failed test, in the order ctest reported them."""
    found = []
    for line in output.splitlines():
        if "***" not in line:
            continue
        match = FAILED_LINE.search(line)
        if match:
            found.append((match.group(1), match.group(2).strip()))
    return found


def run_suite(build, jobs, log_path, stop_on_failure, only=None):
    command = ["ctest", "--test-dir", build, "-j", str(jobs), "--timeout", str(TEST_TIMEOUT),
               "--output-on-failure"]
    if stop_on_failure:
        command.append("--stop-on-failure")
    if only:
        command += ["-R", "^" + re.escape(only) + "( |$)"]
    status, output, seconds = run_logged(command, log_path)
    total = re.search(r"tests passed, \d+ tests failed out of (\d+)", output)
    return status, failed_tests(output), seconds, int(total.group(1)) if total else None


# ---- One mutant

def check_mutant(mutant, worktree, build, jobs, logs, patch=None):
    """Applies, builds, tests and restores one mutant: a result dictionary."""
    result = {"mutant": mutant, "outcome": ERROR, "test": "", "note": "", "build": 0.0, "tests": 0.0}
    count = snippet_count(worktree, mutant)
    if count != 1:
        result.update(outcome=STALE, note=stale_reason(count))
        return result
    name = mutant["id"]
    apply_mutant(worktree, mutant)
    try:
        status, output, seconds = build_tree(build, jobs, os.path.join(logs, f"{name}.build.log"))
        result["build"] = seconds
        if status != 0:
            program = discovery_failure(output)
            if program:
                result.update(outcome=CAUGHT, test=f"{program} (listing its tests)")
            else:
                result.update(outcome=NO_BUILD, note=f"see {name}.build.log")
            return result
        for attempt in (1, 2):
            log_path = os.path.join(logs, f"{name}.test{attempt}.log")
            status, failures, seconds, _ = run_suite(build, jobs, log_path, stop_on_failure=True)
            result["tests"] += seconds
            if status == 0:
                result["outcome"] = SURVIVED
                return result
            if not failures:
                result.update(outcome=ERROR, note=f"ctest failed without a failed test: see {name}.test{attempt}.log")
                return result
            first, how = failures[0]
            # The same test once more, on its own: a failure that comes back is the mutant's.
            again_status, _, seconds, _ = run_suite(build, jobs, os.path.join(logs, f"{name}.again{attempt}.log"),
                                                    stop_on_failure=False, only=first)
            result["tests"] += seconds
            if again_status != 0:
                how_text = "" if how == "Failed" else f" ({how.lower()})"
                result.update(outcome=CAUGHT, test=first + how_text)
                return result
            log(f"  {first} failed once and passed alone: taken for noise, running the suite again")
            result["note"] = f"{first} failed once, then passed alone"
        result["outcome"] = SURVIVED
        result["note"] += "; the suite failed again without a repeatable failure"
        return result
    finally:
        restore(worktree, mutant, patch)


# ---- The table

def cell(text):
    return str(text).replace("|", "\\|").replace("\n", " ")


def result_text(result):
    outcome = result["outcome"]
    if outcome == CAUGHT:
        text = f"caught by {result['test']}"
    elif outcome == SURVIVED:
        text = "**SURVIVED**"
    elif outcome == NO_BUILD:
        text = "does not compile"
    elif outcome == STALE:
        text = "stale"
    else:
        text = "error"
    if result["note"]:
        text += f" ({result['note']})"
    return text


def seconds_text(result):
    if result["outcome"] == STALE:
        return ""
    total = result["build"] + result["tests"]
    text = f"{total:.0f} ({result['build']:.0f} + {result['tests']:.0f})"
    return text + ", earlier run" if result.get("reused") else text


def summary_counts(results):
    counts = {key: sum(1 for r in results if r["outcome"] == key) for key in (CAUGHT, SURVIVED, NO_BUILD, STALE, ERROR)}
    counts["judged"] = counts[CAUGHT] + counts[SURVIVED]
    return counts


def summary_line(results):
    c = summary_counts(results)
    line = f"caught {c[CAUGHT]} of {c['judged']} ({c[SURVIVED]} survived)"
    extra = [f"{c[key]} {key}" for key in (STALE, NO_BUILD, ERROR) if c[key]]
    return line + ("; " + ", ".join(extra) if extra else "")


def markdown(info, results, planned, done):
    lines = [f"# Mutation check of {info['commit'][:12]}", ""]
    lines.append(f"- Commit: `{info['commit']}` ({cell(info['subject'])})")
    lines.append(f"- Started: {info['started']}; worktree `{info['worktree']}`; `-j{info['jobs']}`")
    if info.get("patch"):
        lines.append(f"- Patched before building: `{info['patch']}` ({', '.join(sorted(patched_files(info['patch'])))})")
    lines.append(f"- Baseline: build {info['baseline_build']:.0f} s; whole suite {info['baseline_tests']:.0f} s "
                 f"({info['baseline_count']} tests, all passed)")
    if done < planned:
        lines.append(f"- In progress: {done} of {planned} mutants checked so far")
    lines.append(f"- Summary: {summary_line(results)}")
    reused = sum(1 for r in results if r.get("reused"))
    if reused:
        lines.append(f"- {reused} verdicts taken from an earlier run at the same commit (marked \"earlier run\")")
    if "total" in info:
        lines.append(f"- Total run time: {info['total'] / 60:.1f} min")
    lines += ["", "Seconds are build + tests; the suite stops at its first failure.", "",
              "| id | layer | file | fault | result | seconds |", "|---|---|---|---|---|---|"]
    for r in results:
        m = r["mutant"]
        lines.append(f"| {m['id']} | {m['layer']} | `{m['file']}` | {cell(m['fault'])} | {cell(result_text(r))} "
                     f"| {seconds_text(r)} |")
    layers = []
    for r in results:
        if r["mutant"]["layer"] not in layers:
            layers.append(r["mutant"]["layer"])
    lines += ["", "| layer | mutants | caught | survived | other |", "|---|---|---|---|---|"]
    for layer in layers:
        own = [r for r in results if r["mutant"]["layer"] == layer]
        c = summary_counts(own)
        lines.append(f"| {layer} | {len(own)} | {c[CAUGHT]} | {c[SURVIVED]} | {len(own) - c['judged']} |")
    return "\n".join(lines) + "\n"


def file_digest(path):
    if not path:
        return ""
    with open(path, "rb") as data:
        return hashlib.sha256(data.read()).hexdigest()


MUTANT_KEYS = ("id", "layer", "file", "fault", "find", "replace")


def save_results(path, info, results):
    if not path:
        return
    record = {"commit": info["commit"], "patch_sha256": file_digest(info.get("patch")),
              "results": [{**{key: r["mutant"][key] for key in MUTANT_KEYS},
                           **{key: r[key] for key in ("outcome", "test", "note", "build", "tests")}}
                          for r in results]}
    write_table(path, json.dumps(record, indent=2, ensure_ascii=False) + "\n")


def earlier_results(path, commit, patch):
    """Verdicts of an earlier run at the same commit and patch, by mutant id."""
    try:
        with open(path, encoding="utf-8") as source:
            record = json.load(source)
    except (OSError, ValueError):
        return {}
    if record.get("commit") != commit or record.get("patch_sha256") != file_digest(patch):
        return {}
    return {r["id"]: r for r in record.get("results", []) if r.get("outcome") in (CAUGHT, SURVIVED)}


def reused_result(mutant, earlier):
    known = earlier.get(mutant["id"])
    if not known or any(known.get(key) != mutant[key] for key in MUTANT_KEYS):
        return None
    return {"mutant": mutant, "outcome": known["outcome"], "test": known.get("test", ""),
            "note": known.get("note", ""), "build": known.get("build", 0.0), "tests": known.get("tests", 0.0),
            "reused": True}


def write_table(path, text):
    if not path:
        return
    temporary = path + ".tmp"
    with open(temporary, "w", encoding="utf-8") as out:
        out.write(text)
    os.replace(temporary, path)


# ---- Main

def parse_arguments():
    parser = argparse.ArgumentParser(description="Measure how many deliberate faults the test suite catches.")
    parser.add_argument("--commit", default="HEAD", help="the commit to check (default: HEAD of the checkout)")
    parser.add_argument("--dir", default=DEFAULT_DIR, help=f"the worktree to build in (default: {DEFAULT_DIR})")
    parser.add_argument("--only", default="", help="only these mutant ids, comma-separated")
    parser.add_argument("--jobs", type=int, default=2, help="parallel build jobs and tests (default: 2)")
    parser.add_argument("--out", default="", help="also write the Markdown table to this file")
    parser.add_argument("--repo", default=DEFAULT_REPO, help=f"the checkout to take commits from (default: {DEFAULT_REPO})")
    parser.add_argument("--mutants", default=DEFAULT_MUTANTS, help="the mutants file (default: scripts/mutants.json)")
    parser.add_argument("--patch", default="", help="apply this patch to the worktree before building")
    parser.add_argument("--reuse", action="store_true",
                        help="take unchanged mutants' verdicts from the JSON beside --out (same commit and patch)")
    parser.add_argument("--list", action="store_true", help="list the mutants and exit")
    parser.add_argument("--check-only", action="store_true",
                        help="prepare the worktree and check that every snippet occurs once; no build")
    arguments = parser.parse_args()
    if arguments.jobs < 1:
        parser.error("--jobs takes a number from 1 up")
    return arguments


def main():
    arguments = parse_arguments()
    mutants = load_mutants(arguments.mutants)
    if arguments.only:
        wanted = [name.strip() for name in arguments.only.split(",") if name.strip()]
        unknown = [name for name in wanted if name not in {m["id"] for m in mutants}]
        if unknown:
            fail(f"unknown mutant ids: {', '.join(unknown)}", 2)
        mutants = [m for m in mutants if m["id"] in wanted]
    if arguments.list:
        for m in mutants:
            print(f"{m['id']:12} {m['layer']:18} {m['file']:45} {m['fault']}")
        return 0

    # A SIGTERM ends the run the way Ctrl-C does: the mutated file is put back first.
    def stop(signal_number, _frame):
        raise KeyboardInterrupt(f"signal {signal_number}")
    signal.signal(signal.SIGTERM, stop)

    started = time.monotonic()
    repo = os.path.abspath(arguments.repo)
    worktree = os.path.abspath(arguments.dir)
    out = os.path.abspath(arguments.out) if arguments.out else ""
    if arguments.reuse and not out:
        fail("--reuse takes the earlier verdicts from beside --out: give --out", 2)
    record = (os.path.splitext(out)[0] + ".json") if out else ""
    patch = os.path.abspath(arguments.patch) if arguments.patch else ""
    if patch and not os.path.isfile(patch):
        fail(f"no patch at {patch}", 2)
    commit, subject = prepare_worktree(repo, worktree, arguments.commit)
    if patch:
        log(f"applying {patch} ({', '.join(sorted(patched_files(patch)))})")
        apply_patch(worktree, patch)
    if arguments.check_only:
        stale = [(m, snippet_count(worktree, m)) for m in mutants]
        stale = [(m, count) for m, count in stale if count != 1]
        for m, count in stale:
            log(f"{m['id']}: stale ({stale_reason(count)}) in {m['file']}")
        log(f"{len(mutants) - len(stale)} of {len(mutants)} mutants apply at {commit[:12]}")
        return 1 if stale else 0

    build = os.path.join(worktree, "build")
    logs = (os.path.splitext(out)[0] + "-logs") if out else os.path.join(build, "mutation-logs")
    if out:
        os.makedirs(os.path.dirname(out), exist_ok=True)
    os.makedirs(build, exist_ok=True)
    os.makedirs(logs, exist_ok=True)
    log(f"{len(mutants)} mutants; logs in {logs}")

    configure(worktree, build, logs)
    log("building the unmutated tree")
    status, _, build_seconds = build_tree(build, arguments.jobs, os.path.join(logs, "baseline.build.log"))
    if status != 0:
        fail(f"the unmutated tree does not build: see {os.path.join(logs, 'baseline.build.log')}")
    log(f"built in {build_seconds:.0f} s; running the whole suite")
    status, failures, test_seconds, count = run_suite(build, arguments.jobs, os.path.join(logs, "baseline.test.log"),
                                                      stop_on_failure=False)
    if status != 0:
        names = ", ".join(name + ("" if how == "Failed" else f" ({how.lower()})") for name, how in failures)
        fail(f"the suite fails before any mutation ({names or 'see baseline.test.log'}): nothing to measure")
    log(f"the suite passed: {count} tests in {test_seconds:.0f} s")

    info = {"commit": commit, "subject": subject, "worktree": worktree, "jobs": arguments.jobs,
            "started": datetime.datetime.now().strftime("%Y-%m-%d %H:%M"), "baseline_build": build_seconds,
            "baseline_tests": test_seconds, "baseline_count": count, "patch": patch}
    earlier = earlier_results(record, commit, patch) if arguments.reuse else {}
    results = []
    mutation_start = time.monotonic()
    checked = 0
    try:
        for index, mutant in enumerate(mutants, 1):
            result = reused_result(mutant, earlier)
            if result:
                log(f"[{index}/{len(mutants)}] {mutant['id']}: {result_text(result)} (earlier run)")
            else:
                log(f"[{index}/{len(mutants)}] {mutant['id']} {mutant['file']}: {mutant['fault']}")
                result = check_mutant(mutant, worktree, build, arguments.jobs, logs, patch)
                checked += 1
            results.append(result)
            spent = time.monotonic() - mutation_start
            to_check = sum(1 for m in mutants[index:] if not reused_result(m, earlier))
            left = spent / max(checked, 1) * to_check
            if not result.get("reused"):
                log(f"[{index}/{len(mutants)}] {mutant['id']}: {result_text(result)}, {seconds_text(result)} s; "
                    f"{summary_line(results)}; about {left / 60:.0f} min left")
            write_table(out, markdown(info, results, len(mutants), index))
            save_results(record, info, results)
    except KeyboardInterrupt:
        log("interrupted: the mutated file was put back")
        write_table(out, markdown(info, results, len(mutants), len(results)))
        save_results(record, info, results)
        return 1

    info["total"] = time.monotonic() - started
    text = markdown(info, results, len(mutants), len(mutants))
    write_table(out, text)
    save_results(record, info, results)
    print()
    print(text, end="", flush=True)
    if out:
        log(f"table written to {out}")
    counts = summary_counts(results)
    return 0 if counts["judged"] == len(results) else 1


if __name__ == "__main__":
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        log("interrupted")
        sys.exit(130)
