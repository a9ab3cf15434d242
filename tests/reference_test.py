#!/usr/bin/env python3
"""The reference is made without a warning, and describes every record and every field; its first
page names every record.

    reference_test.py DOXYFILE SCHEMA
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

OTHER = re.compile(r"^(|syntax .*;|package .*;|})$")
DECLARATION = re.compile(r"^(optional|required|repeated) \w+ (\w+) = \d+.*;$")


def schema_of(path):
    """By message: its comment, and by field declaration: the field's comment."""
    messages, comment, fields = {}, [], {}
    for line in path.read_text().splitlines():
        line = line.strip()
        if line.startswith("//"):
            comment.append(line[2:].strip())
            continue
        if line.startswith("message "):
            fields = {}
            messages[line.split()[1]] = (" ".join(comment), fields)
        elif DECLARATION.match(line):
            fields[line] = " ".join(comment)
        elif not OTHER.match(line):
            sys.exit(f"reference_test: {path}: cannot make sense of '{line}'")
        comment = []
    if not messages:
        sys.exit(f"reference_test: {path}: holds no message")
    return messages


def not_on_main_page(messages):
    page = pathlib.Path(__file__).parents[1] / "docs/reference/main_page.md"
    named = set(re.findall(r"zarvo::calibration::(\w+)", page.read_text()))
    return [f"{message}: not on {page}: docs/extending.md tells what a new message needs"
            for message in messages if message not in named]


def text_of(*elements):
    return " ".join("".join("".join(e.itertext()) for e in elements if e is not None).split())


def main():
    doxyfile, schema = (pathlib.Path(name) for name in sys.argv[1:])
    if not doxyfile.exists():
        sys.exit(f"reference_test: no {doxyfile}: doxygen was not installed when CMake configured")
    failures = []
    with tempfile.TemporaryDirectory() as folder:
        settings = f"{doxyfile.read_text()}\nOUTPUT_DIRECTORY = {folder}\n"
        done = subprocess.run(["doxygen", "-"], input=settings, text=True, capture_output=True,
                              check=False)
        if done.returncode != 0 or done.stderr.strip():
            failures.append(f"doxygen ended with {done.returncode} and said: {done.stderr}")
        messages = schema_of(schema)
        failures += not_on_main_page(messages)
        for message, (comment, fields) in messages.items():
            path = pathlib.Path(folder, "xml", f"classzarvo_1_1calibration_1_1{message}.xml")
            if not path.exists():
                failures.append(f"{message}: has no page")
                continue
            page = xml.etree.ElementTree.parse(path).find("compounddef")
            description = text_of(page.find("briefdescription"), page.find("detaileddescription"))
            if description != comment:
                failures.append(f"{message}: is described as '{description}', not as '{comment}'")
            groups = {group.findtext("header"): group for group in page.findall("sectiondef")}
            for declaration, comment in fields.items():
                group = groups.get(declaration)
                if group is None:
                    failures.append(f"{message}: no group for '{declaration}'")
                    continue
                description = text_of(group.find("description"))
                if description != comment:
                    failures.append(f"{message}: {declaration} is described as '{description}', "
                                    f"not as '{comment}'")
                members = {member.findtext("name") for member in group.findall("memberdef")}
                name = DECLARATION.match(declaration)[2]
                if not {name, f"clear_{name}"} <= members:
                    failures.append(f"{message}: '{declaration}' heads {sorted(members)}")
    count = sum(len(fields) for _, fields in messages.values())
    print("\n".join(failures) or f"{len(messages)} records and {count} fields are described")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
