"""Tries mutants of the library's sources or of calib's; see scripts/mutate, which runs this.

    mutants.py --build FOLDER [--calib] [--count N] [--only REGEX] [--slice I/N] [--seconds S]
               [--seed SEED] [--list] -- CMAKE-ARGUMENT...

From top to bottom: which changes there are, which of them are tried, how a suite is run within
limits, the builds that a mutant is held against, and the report.
"""

import argparse
import contextlib
import functools
import glob
import json
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import time
from typing import NamedTuple

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


class Subject(NamedTuple):
    """What is built and run against a mutant."""
    targets: list
    tests: list  # regular expressions for ctest's names, in the order in which they are run


# The quick ones first: the first that fails ends it.
SUITES = ["parsing_test", "serialization_test", "object_model_test", "merging_test",
          "accessors_test", "element_blocks_test", "registration_test", "entrances_test",
          "fault_test", "nesting_test", "truncation_test", "damage_test", "rewriting_test",
          "random_test", "schema_test", "stored_records_test", "loose_alignment_test",
          "total_bytes_limit_test", "allocation_test", "memory_test", "mutation_test",
          "size_limit_test"]
ARGUMENTS = {"mutation_test": ["--gtest_filter=-*ThreeBytes*:*EveryTwoBitFlip*"]}
LIBRARY = Subject(["calibration_protolib", *SUITES], SUITES)
CALIB_SUITES = ["calib_printable_test", "calib_charts_test", "calib_coverage_test",
                "calib_plausible_test", "calib_conventions_test", "calib_lens_test",
                "calib_wire_defect_test", "calib_json_place_test", "calib_unknown_fields_test",
                "calib_export_test", "calib_mcap_test", "calib_library_test", "calib_file_test",
                "calib_log_append_test", "calib_writers_test", "geometry_camera_test",
                "geometry_pair_test", "geometry_memory_test", "calib_out_of_memory_test",
                "calib_foreign_memory_test"]
CALIB = Subject(["calib", *CALIB_SUITES],
                [*CALIB_SUITES, r"calib_(subcommands|pictures)_test", r"calib_test\..*"])
# How much memory is asked for, AddressSanitizer has nothing to say of, and takes minutes for.
ABOUT_MEMORY = {"memory_test", "size_limit_test", "calib_foreign_memory_test"}
# Those in which threads meet, for ThreadSanitizer.
RACES = Subject(["calibration_protolib", "concurrency_test", "element_blocks_test"],
                [r"concurrency_test\..*", "element_blocks_test"])


def without(subject, left_out):
    return Subject(*([name for name in names if name not in left_out] for names in subject))


# A suite may take ten times as long as with the sources as they are, but twenty seconds at least,
# and two gigabytes more.
TIMES, LEAST_SECONDS, MORE_BYTES = 10, 20, 2 << 30

# --- Changes -------------------------------------------------------------------------------------


def code_of(text):
    """The text with comments, strings and preprocessor lines blanked out, of the same length."""
    def blank(match):
        return re.sub(r"[^\n]", " ", match.group())
    pattern = r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'|^[ ]*#(?:\\\n|[^\n])*'
    return re.sub(pattern, blank, text, flags=re.S | re.M)


# Each of these yields (start, end, replacement) for every change of its kind in the code.

def other_masks(code):
    """One bit less, one more."""
    for match in re.finditer(r"\b0x([0-9A-Fa-f]+)(u?)\b", code):
        value = int(match[1], 16)
        for other in {value & (value - 1), value ^ (value & -value) << 1}:
            yield match.start(), match.end(), f"0x{other:X}{match[2]}"


def other_numbers(code):
    for match in re.finditer(r"(?<![\w.])(\d+)(u?)\b(?!\.)", code):
        yield match.start(), match.end(), f"{int(match[1]) + 1}{match[2]}"
        if int(match[1]) > 1:
            yield match.start(), match.end(), f"{int(match[1]) - 1}{match[2]}"


def other_operators(code):
    swaps = {"==": "!=", "!=": "==", "<=": "<", ">=": ">", "&&": "||", "||": "&&", "+=": "-=",
             "-=": "+=", "|=": "&=", "<": "<=", ">": ">=", "+": "-", "-": "+", "&": "|", "%": "/",
             "*": "/", "/": "*"}
    for match in re.finditer(r" (==|!=|<=|>=|&&|\|\||\+=|-=|\|=|<|>|\+|-|&|%|/|\*) ", code):
        yield match.start(1), match.end(1), swaps[match[1]]


def other_truths(code):
    for match in re.finditer(r"(?<=[( ])!(?=[\w(])", code):
        yield match.start(), match.end(), ""
    for match in re.finditer(r"\breturn (true|false);", code):
        yield match.start(1), match.end(1), "false" if match[1] == "true" else "true"


def removed_statements(code):
    """A statement in a line of its own, not a declaration or a jump; and what an if of one line
    does."""
    skipped = r"(?!return\b|goto\b|using\b|typedef\b|static\b|const\b|friend\b|else\b|delete\b|break\b)"
    statement = rf"{skipped}[\w:*>.()\[\]-]+(?: [|+-]?=|\(|\+\+|--)[^\n;{{}}]*;"
    for match in re.finditer(rf"^ +({statement})$", code, re.M):
        if not re.match(r"[\w:]+ \w+\(.*\);$", match[1]):
            yield match.start(1), match.end(1), ";"
    for match in re.finditer(rf"^ +if \(.*\) ({skipped}[^\n;{{}}]*;)$", code, re.M):
        yield match.start(1), match.end(1), ";"


def weaker_synchronization(code):
    for match in re.finditer(r"\b(memory_order_|__ATOMIC_)(?!relaxed|RELAXED)\w+", code):
        yield *match.span(), match[1] + ("relaxed" if match[1].islower() else "RELAXED")
    for match in re.finditer(r"^ +(::std::lock_guard<[^\n;]*;)$", code, re.M):
        yield match.start(1), match.end(1), ";"


def changes(code, kinds):
    return sorted({change for kind in kinds for change in kind(code)})


EVERYWHERE = [other_masks, other_numbers, other_operators, other_truths, removed_statements]

# --- Mutants -------------------------------------------------------------------------------------


@functools.lru_cache(maxsize=None)
def text_of(file):
    with open(f"{ROOT}/{file}", encoding="utf-8") as source:
        return source.read()


class Mutant(NamedTuple):
    file: str
    start: int
    end: int
    new: str

    def text(self):
        """The whole file, changed."""
        text = text_of(self.file)
        return text[:self.start] + self.new + text[self.end:]

    def described(self):
        """The place, what stood there, what does now, and the line that it was in."""
        text = text_of(self.file)
        number = text.count("\n", 0, self.start) + 1
        line = text[text.rfind("\n", 0, self.start) + 1:text.find("\n", self.start)]
        functions = re.findall(r"^(?:\w[\w:&*<> ]*[ &*])?(\w+::~?\w+)\(", text[:self.start], re.M)
        place = f"{self.file}:{number}" + (f" {functions[-1]}" if functions else "")
        return place, text[self.start:self.end].replace("\n", " "), self.new, line.strip()

    def matches(self, pattern):
        return re.search(pattern, "\t".join(self.described()))


def library_files(arguments):
    """What is compiled of calibration_common/ with these arguments: not the headers for other
    run-times."""
    prefixes = [os.environ.get("CMAKE_PREFIX_PATH", "/usr")]
    prefixes += [a.split("=", 1)[1] for a in arguments if re.match("-DCMAKE_PREFIX_PATH[:=]", a)]
    include = f"{prefixes[-1]}/include"
    if not os.path.exists(f"{include}/google/protobuf/stubs/common.h"):
        sys.exit(f"mutate: there is no {include}/google/protobuf/stubs/common.h: a protobuf "
                 f"run-time was expected in {prefixes[-1]}, one folder")
    sources = [file for file in sources_below("calibration_common") if file.endswith(".cc")]
    command = [os.environ.get("CXX", "c++"), "-std=c++17", "-MM", "-I.", f"-I{include}", *sources]
    rules = subprocess.run(command, cwd=ROOT, check=True, stdout=subprocess.PIPE, text=True).stdout
    compiled = set(rules.split())
    return [file for file in sources_below("calibration_common") if file in compiled]


def sources_below(top):
    for folder, _, names in sorted(os.walk(f"{ROOT}/{top}")):
        for name in sorted(names):
            if name.endswith((".h", ".cc")):
                yield os.path.relpath(f"{folder}/{name}", ROOT)


def all_mutants(files, kinds):
    return [Mutant(file, *change) for file in files
            for change in changes(code_of(text_of(file)), kinds)]


def pools_of(is_calib, arguments):
    """All mutants there are, in lists, each with its share in a sample."""
    if is_calib:
        return [(all_mutants(sources_below("calib"), EVERYWHERE), 1)]
    files = library_files(arguments)
    generated = [file for file in files if ".pb." in file]
    written = [file for file in files if ".pb." not in file]
    return [(all_mutants(generated, EVERYWHERE), 1 / 2), (all_mutants(written, EVERYWHERE), 1 / 2),
            (all_mutants(files, [weaker_synchronization]), 1 / 50)]


def headers_last(mutants):
    """After a change in one of them, every suite is built anew."""
    return sorted(mutants, key=lambda mutant: mutant.file.endswith(".h"))


def sample(pools, count, seed):
    """The same mutants for the same sources."""
    chosen = []
    for pool, share in pools:
        random.Random(seed).shuffle(pool)
        chosen += pool[:int(count * share)]
    random.Random(seed).shuffle(chosen)
    return headers_last(chosen)


def matching(pools, pattern):
    return headers_last(mutant for pool, _ in pools for mutant in pool if mutant.matches(pattern))


# --- Running a suite within limits ---------------------------------------------------------------


class Suite(NamedTuple):
    name: str
    target: str
    command: list


class Cost(NamedTuple):
    """What a suite takes, or may take."""
    seconds: float
    bytes: float

    def as_limit(self):
        return Cost(max(LEAST_SECONDS, TIMES * self.seconds), self.bytes + MORE_BYTES)


NO_LIMIT = Cost(float("inf"), float("inf"))


def family_of(pid):
    """The process, and those that descend from it, as {process id: bytes of memory}."""
    parents, memory = {}, {}
    for path in glob.glob("/proc/[0-9]*/stat"):
        with contextlib.suppress(OSError):  # it has ended meanwhile
            with open(path, encoding="utf-8", errors="replace") as stat:
                fields = stat.read().rpartition(")")[2].split()
            process = int(path.split("/")[2])
            parents[process], memory[process] = int(fields[1]), int(fields[21])
    family = [pid]
    for member in family:
        family += [process for process, parent in parents.items() if parent == member]
    return {member: memory.get(member, 0) * os.sysconf("SC_PAGESIZE") for member in family}


def kill_family(process):
    for member in family_of(process.pid):
        with contextlib.suppress(OSError):
            os.kill(member, signal.SIGKILL)
    process.wait()


def run(command, limit, environment=None):
    """What ended the command, "" if it passed: "failure", "time" or "memory"; and its cost.

    What memory is in use is looked at, rather than limited by the system: a sanitizer reserves more
    address space than there is, and who runs into a limit of that fails in one of many ways."""
    started, peak = time.monotonic(), 0
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, env=environment) as process:
        try:
            while True:
                with contextlib.suppress(subprocess.TimeoutExpired):
                    process.wait(0.05)
                cost = Cost(time.monotonic() - started, peak)
                if process.returncode is not None:
                    return "failure" if process.returncode != 0 else "", cost
                peak = max(peak, sum(family_of(process.pid).values()))
                if peak > limit.bytes:
                    return "memory", cost
                if cost.seconds > limit.seconds:
                    return "time", cost
        finally:
            if process.returncode is None:
                kill_family(process)


# --- Builds --------------------------------------------------------------------------------------


class Sources:
    """A copy of the sources, in which one mutant stands at a time."""

    def __init__(self, folder):
        self.folder = folder
        for part in sorted(set(os.listdir(ROOT)) - {".git", "build"}):
            self._copy(f"{ROOT}/{part}", f"{folder}/{part}")

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

    @contextlib.contextmanager
    def changed(self, mutant):
        self._write(mutant.file, mutant.text())
        yield
        self._write(mutant.file, text_of(mutant.file))

    def _write(self, file, text):
        with open(f"{self.folder}/{file}", "w", encoding="utf-8") as target:
            target.write(text)


def output_of_failed(command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False)
    return done.stdout if done.returncode != 0 else None


class Build:
    """A build of the sources as they are, and its suites, all of which pass."""

    def __init__(self, folder, sources, subject, arguments, sanitizer=""):
        self.folder, self.reports, self.sanitizer = folder, f"{folder}/reports", sanitizer
        os.makedirs(self.reports, exist_ok=True)
        arguments = [*arguments, f"-DCALIBRATION_SANITIZE={sanitizer}"] if sanitizer else arguments
        log = output_of_failed(["cmake", "-S", sources.folder, "-B", folder, *arguments])
        if log is not None or (log := self._failure_to_build(*subject.targets)) is not None:
            sys.exit(f"mutate: the sources as they are do not build in {folder}:\n{log}")
        self.suites = list(self._suites(subject.tests))
        self.limits = {}
        for suite in self.suites:
            failure, cost = self._run(suite, NO_LIMIT)
            if failure:
                sys.exit(f"mutate: {suite.name} fails in {folder} with the sources as they are: "
                         f"{failure}")
            self.limits[suite.name] = cost.as_limit()

    def _failure_to_build(self, *targets):
        """The compiler's words."""
        return output_of_failed(["cmake", "--build", self.folder, "--parallel", "1", "--target",
                                 *targets])

    def _suites(self, patterns):
        listing = subprocess.run(["ctest", "--test-dir", self.folder, "--show-only=json-v1"],
                                 stdout=subprocess.PIPE, check=True).stdout
        tests = json.loads(listing)["tests"]
        for pattern in patterns:
            for test in tests:
                name = test["name"]
                if not re.fullmatch(pattern, name):
                    continue
                if "command" not in test:
                    sys.exit(f"mutate: the program of {name} is not built: its target is missing "
                             "in scripts/mutants.py")
                command = test["command"]
                if command[0].startswith(f"{self.folder}/tests/"):
                    yield Suite(name, os.path.basename(command[0]),
                                [*command, "--gtest_fail_fast", *ARGUMENTS.get(name, [])])
                else:  # a script that runs the command
                    yield Suite(name, "calib", command)

    def judge(self):
        """What becomes of the sources as they stand, and what says so."""
        for suite in self.suites:
            if self._failure_to_build(suite.target) is not None:
                return "not compiled", suite.name
            failure, _ = self._run(suite, self.limits[suite.name])
            if failure:
                return "caught", f"{suite.name} ({failure})" if failure != "failure" else suite.name
        return "survived", ""

    def _run(self, suite, limit):
        """What ended the suite, a sanitizer perhaps, and what it took. Sanitizers write what they
        find to files: what a suite prints is not looked at, and may be endless. (g++'s for
        undefined behavior prints it all the same, and is known by the build alone.)"""
        for report in os.listdir(self.reports):
            os.remove(f"{self.reports}/{report}")
        options = {f"{name}_OPTIONS": f"log_path={self.reports}/report" for name in ("ASAN", "TSAN")}
        failure, cost = run(suite.command, limit, {**os.environ, **options})
        if failure == "failure" and self.sanitizer:
            failure = self._reported() or f"-fsanitize={self.sanitizer}"
        return failure, cost

    def _reported(self):
        """The sanitizer that reports something, if any does."""
        for path in glob.glob(f"{self.reports}/*"):
            with open(path, encoding="utf-8", errors="replace") as report:
                if found := re.search(r"(\w+Sanitizer): ", report.read()):
                    return found[1]
        return None


class Trial:
    """The builds that a mutant is held against. Those with sanitizers are made when they are needed
    for the first time."""

    def __init__(self, folder, subject, arguments):
        self.folder, self.subject, self.arguments = folder, subject, arguments
        self.sources = Sources(f"{folder}/source")
        self.plain = Build(folder, self.sources, subject, arguments)
        self.reasons = explanations()

    @functools.lru_cache(maxsize=None)
    def _sanitized(self, sanitizer):
        subject = RACES if sanitizer == "thread" else without(self.subject, ABOUT_MEMORY)
        folder = f"{self.folder}-{sanitizer.partition(',')[0]}"
        print(f"== building with -fsanitize={sanitizer} in {folder}", flush=True)
        # Slow suites, built once: what the compiler saves here is worth its time.
        arguments = [*self.arguments, "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG"]
        return Build(folder, self.sources, subject, arguments, sanitizer)

    def verdict(self, mutant):
        """What becomes of the mutant, and what says so."""
        with self.sources.changed(mutant):
            verdict, by = self.plain.judge()
        if verdict != "survived":
            return verdict, by
        for pattern, reason in self.reasons:
            if mutant.matches(pattern):
                return "explained", reason
        for sanitizer in sanitizers_for(mutant):
            build = self._sanitized(sanitizer)
            with self.sources.changed(mutant):
                verdict, by = build.judge()
            if verdict == "caught":
                return verdict, by
        return "survived", ""


def explanations():
    with open(f"{ROOT}/scripts/mutants_explained.txt", encoding="utf-8") as lines:
        return [line.rstrip("\n").split("\t", 1) for line in lines
                if line.strip() and not line.startswith("#")]


def sanitizers_for(mutant):
    line = mutant.described()[3]
    if re.search(r"atomic|once|memory_order|lock_guard", line, re.I):
        return ["thread", "address,undefined"]
    return ["address,undefined"]


# --- The report ----------------------------------------------------------------------------------


class Tally:
    def __init__(self, path):
        self.counts = {"caught": 0, "survived": 0, "explained": 0, "not compiled": 0}
        self.by_sanitizer = 0
        self.results = open(path, "w", encoding="utf-8")
        self.started = time.monotonic()

    def seconds(self):
        return time.monotonic() - self.started

    def add(self, mutant, verdict, by):
        place, old, new, line = mutant.described()
        new = new or "(nothing)"
        self.counts[verdict] += 1
        self.by_sanitizer += verdict == "caught" and "anitize" in by
        print(verdict, by or "-", place, old, "->", new, "|", line, sep="\t", file=self.results,
              flush=True)
        print(f"{verdict:12} {place}: {old} -> {new}    {by}", flush=True)

    def share(self):
        """Of those that make a difference."""
        missed = self.counts["survived"]
        return self.counts["caught"] / max(self.counts["caught"] + missed, 1)

    def summary(self):
        caught, survived, explained, broken = self.counts.values()
        tried = caught + survived + explained
        return (f"{tried} mutants, {caught} caught, {self.by_sanitizer} of them by a sanitizer: "
                f"{100 * caught / max(tried, 1):.1f} % of all, {100 * self.share():.1f} % of those "
                f"that make a difference; {survived} survived, {explained} survived as explained, "
                f"{broken} did not compile; {self.seconds():.0f} s")


def parse_command_line():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", required=True)
    parser.add_argument("--calib", action="store_true")
    parser.add_argument("--count", type=int, default=340)
    parser.add_argument("--only")
    parser.add_argument("--slice", default="1/1")
    parser.add_argument("--seconds", type=float, default=float("inf"))
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--list", action="store_true")
    parser.add_argument("arguments", nargs="*")
    return parser.parse_args()


def chosen_mutants(options):
    pools = pools_of(options.calib, options.arguments)
    if options.only is None:
        mutants = sample(pools, options.count, options.seed)
    else:
        mutants = matching(pools, options.only)[:options.count]
    first, step = map(int, options.slice.split("/"))
    return mutants[first - 1::step]


def main():
    options = parse_command_line()
    mutants = chosen_mutants(options)
    if options.list:
        for mutant in mutants:
            print("\t".join(mutant.described()))
        return
    if not mutants:
        sys.exit("mutate: there is no such mutant")
    trial = Trial(options.build, CALIB if options.calib else LIBRARY, options.arguments)
    tally = Tally(f"{options.build}/results.tsv")
    for mutant in mutants:
        if tally.seconds() > options.seconds:
            break
        tally.add(mutant, *trial.verdict(mutant))
    print(tally.summary())
    sys.exit(0 if tally.share() >= 0.97 else 1)


if __name__ == "__main__":
    main()
