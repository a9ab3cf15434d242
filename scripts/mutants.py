"""Tries mutants of the library's sources; see scripts/mutate, which runs this.

    mutants.py --build FOLDER [--count N] [--slice I/N] [--seconds S] [--seed SEED] [--list]
               -- CMAKE-ARGUMENT...
"""

import argparse
import os
import random
import re
import shutil
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
# The quick ones first: the first that fails ends it. Seconds after which a suite counts as hung.
SUITES = ["parsing_test", "serialization_test", "object_model_test", "merging_test",
          "accessors_test", "element_blocks_test", "registration_test", "entrances_test",
          "fault_test", "nesting_test", "truncation_test", "damage_test", "rewriting_test",
          "random_test", "schema_test", "allocation_test", "memory_test", "mutation_test",
          "size_limit_test"]
ARGUMENTS = {"mutation_test": ["--gtest_filter=-*ThreeBytes*:*EveryTwoBitFlip*"]}
TIME_LIMIT = 120


def code_of(text):
    """The text with comments, strings and preprocessor lines blanked out, of the same length."""
    def blank(match):
        return re.sub(r"[^\n]", " ", match.group())
    pattern = r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'|^[ ]*#(?:\\\n|[^\n])*'
    return re.sub(pattern, blank, text, flags=re.S | re.M)


def changes(code):
    """Yields (start, end, replacement) for every change that can be made in the code."""
    for match in re.finditer(r"\b0x([0-9A-Fa-f]+)(u?)\b", code):  # a mask: one bit less, one more
        value = int(match[1], 16)
        for other in {value & (value - 1), value ^ (value & -value) << 1}:
            yield match.start(), match.end(), f"0x{other:X}{match[2]}"
    for match in re.finditer(r"(?<![\w.])(\d+)(u?)\b(?!\.)", code):
        yield match.start(), match.end(), f"{int(match[1]) + 1}{match[2]}"
        if int(match[1]) > 1:
            yield match.start(), match.end(), f"{int(match[1]) - 1}{match[2]}"
    swaps = {"==": "!=", "!=": "==", "<=": "<", ">=": ">", "&&": "||", "||": "&&", "+=": "-=",
             "-=": "+=", "|=": "&="}
    for match in re.finditer(r" (==|!=|<=|>=|&&|\|\||\+=|-=|\|=|<|>|\+|-|&|%|/|\*) ", code):
        single = {"<": "<=", ">": ">=", "+": "-", "-": "+", "&": "|", "%": "/", "*": "/", "/": "*"}
        other = swaps.get(match[1]) or single[match[1]]
        yield match.start(1), match.end(1), other
    for match in re.finditer(r"(?<=[( ])!(?=[\w(])", code):
        yield match.start(), match.end(), ""
    for match in re.finditer(r"\breturn (true|false);", code):
        yield match.start(1), match.end(1), "false" if match[1] == "true" else "true"
    # A statement in a line of its own, not a declaration or a jump; and what an if of one line does.
    skipped = r"(?!return\b|goto\b|using\b|typedef\b|static\b|const\b|friend\b|else\b|delete\b|break\b)"
    for match in re.finditer(rf"^ +({skipped}[\w:*>.()\[\]-]+(?: [|+-]?=|\(|\+\+|--)[^\n;{{}}]*;)$", code,
                             re.M):
        if not re.match(r"[\w:]+ \w+\(.*\);$", match[1]):
            yield match.start(1), match.end(1), ";"
    for match in re.finditer(rf"^ +if \(.*\) ({skipped}[^\n;{{}}]*;)$", code, re.M):
        yield match.start(1), match.end(1), ";"


def other_series(arguments):
    """What the names of the files end in that a build with these arguments does not use."""
    prefix = next((a.split("=", 1)[1] for a in arguments if a.startswith("-DCMAKE_PREFIX_PATH=")),
                  "/usr")
    with open(f"{prefix}/include/google/protobuf/stubs/common.h") as header:
        is_3_0 = re.search(r"define GOOGLE_PROTOBUF_VERSION 3000", header.read())
    return "_3_21" if is_3_0 else "_3_0"


def sample(count, seed, arguments):
    """The mutants as (file, start, end, replacement), the same for the same sources."""
    other = other_series(arguments)
    generated, written = [], []
    for folder, _, names in sorted(os.walk(f"{ROOT}/calibration_common")):
        for name in sorted(names):
            if not name.endswith((".h", ".cc")) or other in name:
                continue
            with open(f"{folder}/{name}") as source:
                code = code_of(source.read())
            file = os.path.relpath(f"{folder}/{name}", ROOT)
            pool = generated if ".pb." in name else written
            pool += [(file, *change) for change in sorted(set(changes(code)))]
    chosen = []
    for pool in (generated, written):
        random.Random(seed).shuffle(pool)
        chosen += pool[:count // 2]
    random.Random(seed).shuffle(chosen)
    # Headers last: after a change in one of them, every suite is built anew.
    return sorted(chosen, key=lambda mutant: mutant[0].endswith(".h"))


class Build:
    def __init__(self, folder, arguments):
        self.folder = folder
        self.sources = f"{self.folder}/source"
        for part in sorted(set(os.listdir(ROOT)) - {".git", "build"}):
            self._copy(f"{ROOT}/{part}", f"{self.sources}/{part}")
        log = self._run(["cmake", "-S", self.sources, "-B", self.folder, *arguments])
        if log is not None or (log := self.build(*SUITES)) is not None:
            sys.exit(f"mutate: the sources as they are do not build in {self.folder}:\n{log}")
        verdict, by = self.judge()
        if verdict != "survived":
            sys.exit(f"mutate: {by} fails with the sources as they are")

    def _copy(self, source, target):
        """Copies what differs, so that what does not is not built again."""
        if os.path.isdir(source):
            os.makedirs(target, exist_ok=True)
            for name in os.listdir(source):
                self._copy(f"{source}/{name}", f"{target}/{name}")
            return
        os.makedirs(os.path.dirname(target), exist_ok=True)
        with open(source, "rb") as file:
            content = file.read()
        if os.path.exists(target):
            with open(target, "rb") as file:
                if file.read() == content:
                    return
        shutil.copy(source, target)

    @staticmethod
    def _run(command):
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        return done.stdout if done.returncode != 0 else None

    def build(self, *suites):
        """The compiler's words if it fails."""
        return self._run(["cmake", "--build", self.folder, "--parallel", "1", "--target",
                          "calibration_protolib", *suites])

    def judge(self):
        """What becomes of the sources as they stand, and the suite that says so."""
        for suite in SUITES:
            if self.build(suite) is not None:
                return "not compiled", suite
            command = [f"{self.folder}/tests/{suite}", "--gtest_fail_fast", *ARGUMENTS.get(suite, [])]
            try:
                done = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                      timeout=TIME_LIMIT)
            except subprocess.TimeoutExpired:
                return "caught", suite + " (hangs)"
            if done.returncode != 0:
                return "caught", suite
        return "survived", ""

    def write(self, file, text):
        with open(f"{self.sources}/{file}", "w") as target:
            target.write(text)


def explained():
    path = f"{ROOT}/scripts/mutants_explained.txt"
    with open(path) as lines:
        return [line.rstrip("\n").split("\t", 1) for line in lines
                if line.strip() and not line.startswith("#")]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", required=True)
    parser.add_argument("--count", type=int, default=340)
    parser.add_argument("--slice", default="1/1")
    parser.add_argument("--seconds", type=float, default=float("inf"))
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--list", action="store_true")
    parser.add_argument("arguments", nargs="*")
    options = parser.parse_args()
    arguments = options.arguments
    first, step = map(int, options.slice.split("/"))
    mutants = sample(options.count, options.seed, arguments)[first - 1::step]
    reasons = explained()

    def describe(mutant):
        file, start, end, replacement = mutant
        with open(f"{ROOT}/{file}") as source:
            text = source.read()
        number = text.count("\n", 0, start) + 1
        line = text[text.rfind("\n", 0, start) + 1:text.find("\n", start)]
        functions = re.findall(r"^(?:\w[\w:&*<> ]*[ &*])?(\w+::~?\w+)\(", text[:start], re.M)
        place = f"{file}:{number}" + (f" {functions[-1]}" if functions else "")
        return place, text[start:end].replace("\n", " "), replacement, line.strip()

    if options.list:
        for mutant in mutants:
            print("\t".join(describe(mutant)))
        return

    build = Build(options.build, arguments)
    started = time.monotonic()
    counts = {"caught": 0, "survived": 0, "explained": 0, "not compiled": 0}
    with open(f"{build.folder}/results.tsv", "w") as results:
        for mutant in mutants:
            if time.monotonic() - started > options.seconds:
                break
            file, start, end, replacement = mutant
            with open(f"{ROOT}/{file}") as source:
                text = source.read()
            place, old, new, line = describe(mutant)
            build.write(file, text[:start] + replacement + text[end:])
            verdict, by = build.judge()
            if verdict == "survived":
                for pattern, reason in reasons:
                    if re.search(pattern, f"{place}\t{old}\t{new}\t{line}"):
                        verdict, by = "explained", reason
                        break
            build.write(file, text)
            counts[verdict] += 1
            print(verdict, by or "-", place, old, "->", new or "(nothing)", "|", line, sep="\t",
                  file=results, flush=True)
            print(f"{verdict:12} {place}: {old} -> {new or '(nothing)'}    {by}", flush=True)

    caught, explained_ones = counts["caught"], counts["explained"]
    tried = caught + explained_ones + counts["survived"]
    share = caught / (tried - explained_ones) if tried > explained_ones else 0
    print(f"{tried} mutants, {caught} caught: {100 * caught / max(tried, 1):.1f} % of all, {100 * share:.1f} % "
          f"of those that make a difference; {counts['survived']} survived, {explained_ones} survived as "
          f"explained, {counts['not compiled']} did not compile; {time.monotonic() - started:.0f} s")
    sys.exit(0 if share >= 0.97 else 1)


main()
