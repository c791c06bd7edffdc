#!/usr/bin/env python3
"""Plants one fault at a time in C++ sources and tells which ones the tests catch.

Each mutant is one small edit (a flipped comparison, a dropped call, an off-by-one, swapped
arguments, a removed early return...). The file is rebuilt, the chosen tests run, and the
file is put back. A mutant the tests fail on is killed; one they pass is a survivor to
look at: either a test is missing or the edit does not change behaviour (say why in
tests/mutation/explained.txt, one "file:line: operator: why" a line).

Run it on a copy of the tree, never on a tree others build from:

    rsync -a --exclude 'build*' ./ /tmp/mut/ && cmake -S /tmp/mut -B /tmp/mut/build -G Ninja
    scripts/mutate.py --source /tmp/mut --build /tmp/mut/build \\
        --files plugin/CGoZBrushPlugin.cpp --targets MVGoZBrush mvgoz_integration_tests \\
        --tests 'Plugin' --max 30

Exit code 0 when every mutant that built was killed or explained, 1 otherwise.
"""

import argparse
import json
import os
import random
import re
import subprocess
import sys
import time

OPERATORS = [
    ("flip-equal", re.compile(r"(?<![=!<>])==(?!=)"), "!="),
    ("flip-not-equal", re.compile(r"!=(?!=)"), "=="),
    ("less-or-equal", re.compile(r"(?<=\s)<(?=\s)"), "<="),
    ("greater-or-equal", re.compile(r"(?<=\s)>(?=\s)"), ">="),
    ("strict-less", re.compile(r"(?<=\s)<=(?=\s)"), "<"),
    ("strict-greater", re.compile(r"(?<=\s)>=(?=\s)"), ">"),
    ("and-to-or", re.compile(r"&&"), "||"),
    ("or-to-and", re.compile(r"\|\|"), "&&"),
    ("true-to-false", re.compile(r"\btrue\b"), "false"),
    ("false-to-true", re.compile(r"\bfalse\b"), "true"),
    ("plus-one", re.compile(r"(?<=[\s(])\+ 1\b"), "+ 2"),
    ("minus-one", re.compile(r"(?<=[\s(])- 1\b"), "- 0"),
    ("not-dropped", re.compile(r"(?<![!=])!(?=[\w(])"), ""),
]

CALL_STATEMENT = re.compile(r"^(\s*)((?:[\w:]+(?:->|\.|::))*\w+\([^;{}]*\);)\s*$")
EARLY_RETURN = re.compile(r"^(\s*)return\b[^;]*;\s*$")
TWO_ARGUMENTS = re.compile(r"\b(\w+)\((\s*[\w.:>\-]+\s*),(\s*[\w.:>\-]+\s*)\)")
SKIP_LINE = re.compile(r"^\s*(#|//|\*|/\*)|\bstatic_assert\b|\btemplate\b|\bqDebug\b|\bqWarning\b|\bqInfo\b")


def code_spans(line):
    """(start, end) spans of the line outside string literals and a trailing // comment."""
    spans, start, i, quote = [], 0, 0, None
    while i < len(line):
        c = line[i]
        if quote:
            if c == "\\":
                i += 2
                continue
            if c == quote:
                quote, start = None, i + 1
        elif c in "\"'":
            spans.append((start, i))
            quote = c
        elif line.startswith("//", i):
            spans.append((start, i))
            return spans
        i += 1
    if not quote:
        spans.append((start, len(line)))
    return spans


def mutants_of(path, lines):
    found = []
    depth_if = None
    for number, line in enumerate(lines, 1):
        if SKIP_LINE.search(line) or "#include" in line:
            continue
        for start, end in code_spans(line):
            segment = line[start:end]
            for name, pattern, replacement in OPERATORS:
                for match in pattern.finditer(segment):
                    a, b = start + match.start(), start + match.end()
                    if name in ("less-or-equal", "greater-or-equal") and ("<<" in line or ">>" in line):
                        continue
                    found.append((path, number, name, line[:a] + replacement + line[b:]))
            for match in TWO_ARGUMENTS.finditer(segment):
                first, second = match.group(2).strip(), match.group(3).strip()
                if first != second and not first.isdigit() and not second.isdigit():
                    a, b = start + match.start(2), start + match.end(3)
                    swapped = match.group(2).replace(first, second) + "," + match.group(3).replace(second, first)
                    found.append((path, number, "swap-arguments", line[:a] + swapped + line[b:]))
        call = CALL_STATEMENT.match(line)
        if call and not line.lstrip().startswith(("return", "delete", "if", "while", "for", "switch")):
            found.append((path, number, "drop-call", call.group(1) + ";  // dropped\n"))
        previous = lines[number - 2] if number >= 2 else ""
        if EARLY_RETURN.match(line) and re.search(r"\bif\b.*\{\s*$|\bif\b.*\)\s*$", previous):
            found.append((path, number, "drop-early-return", EARLY_RETURN.match(line).group(1) + ";  // dropped\n"))
    return found


def run(command, cwd, timeout):
    try:
        done = subprocess.run(command, cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=timeout)
        return done.returncode, done.stdout.decode(errors="replace")
    except subprocess.TimeoutExpired:
        return None, "timeout"


def load_explained(source):
    path = os.path.join(source, "tests", "mutation", "explained.txt")
    explained = set()
    if os.path.exists(path):
        for line in open(path, encoding="utf-8"):
            parts = line.split(":")
            if len(parts) >= 3 and not line.startswith("#"):
                explained.add((parts[0].strip(), int(parts[1]), parts[2].strip()))
    return explained


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--source", required=True, help="the tree to mutate (a copy)")
    parser.add_argument("--build", required=True, help="its configured build folder")
    parser.add_argument("--files", nargs="+", required=True, help="sources, relative to --source")
    parser.add_argument("--targets", nargs="+", required=True, help="what to rebuild for each mutant")
    parser.add_argument("--tests", required=True, help="ctest -R regular expression")
    parser.add_argument("--exclude", default="", help="ctest -E regular expression")
    parser.add_argument("--max", type=int, default=0, help="at most this many mutants, drawn at random (0: all)")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--operators", default="", help="comma-separated operator names to keep")
    parser.add_argument("--report", default="", help="JSON file for the results")
    parser.add_argument("--list", action="store_true", help="only list the mutants")
    args = parser.parse_args()

    mutants = []
    for relative in args.files:
        with open(os.path.join(args.source, relative), encoding="utf-8") as f:
            mutants += mutants_of(relative, f.readlines())
    if args.operators:
        keep = set(args.operators.split(","))
        mutants = [m for m in mutants if m[2] in keep]
    if args.max and len(mutants) > args.max:
        mutants = random.Random(args.seed).sample(mutants, args.max)
        mutants.sort(key=lambda m: (m[0], m[1]))
    if args.list:
        for path, number, name, text in mutants:
            print(f"{path}:{number}: {name}: {text.strip()}")
        return 0

    explained = load_explained(args.source)
    env = dict(os.environ)
    results = []
    for index, (relative, number, name, text) in enumerate(mutants, 1):
        path = os.path.join(args.source, relative)
        with open(path, encoding="utf-8") as f:
            original = f.readlines()
        mutated = list(original)
        mutated[number - 1] = text if text.endswith("\n") else text + "\n"
        started = time.time()
        try:
            with open(path, "w", encoding="utf-8") as f:
                f.writelines(mutated)
            code, output = run(["cmake", "--build", args.build, "-j2", "--target"] + args.targets, args.source, 900)
            if code != 0:
                outcome = "stillborn"
            else:
                command = ["ctest", "--test-dir", args.build, "-R", args.tests, "-j2", "--timeout", "120"]
                if args.exclude:
                    command += ["-E", args.exclude]
                code, output = run(command, args.source, 1800)
                outcome = "killed" if code != 0 else "survived"
                if outcome == "survived" and (relative, number, name) in explained:
                    outcome = "explained"
        finally:
            with open(path, "w", encoding="utf-8") as f:
                f.writelines(original)
        seconds = time.time() - started
        results.append({"file": relative, "line": number, "operator": name, "mutant": text.strip(),
                        "outcome": outcome, "seconds": round(seconds, 1)})
        print(f"[{index}/{len(mutants)}] {outcome:9} {relative}:{number} {name}: {text.strip()}", flush=True)
    # Leave the build matching the restored sources.
    run(["cmake", "--build", args.build, "-j2", "--target"] + args.targets, args.source, 900)

    counts = {}
    for r in results:
        counts[r["outcome"]] = counts.get(r["outcome"], 0) + 1
    built = len(results) - counts.get("stillborn", 0)
    caught = counts.get("killed", 0) + counts.get("explained", 0)
    score = 100.0 * caught / built if built else 100.0
    print(f"mutants: {len(results)}, built: {built}, killed: {counts.get('killed', 0)}, "
          f"explained: {counts.get('explained', 0)}, survived: {counts.get('survived', 0)}, score: {score:.1f}%")
    if args.report:
        with open(args.report, "w", encoding="utf-8") as f:
            json.dump({"counts": counts, "score": score, "results": results}, f, indent=1)
    return 0 if counts.get("survived", 0) == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
