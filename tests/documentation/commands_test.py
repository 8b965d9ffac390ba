#!/usr/bin/env python3
"""Every command that a page shows works: it is run, with the exit code and output that the page tells, or everything
that it names is looked for. A command that is neither is a failure, and so is a block that does not say what it is.
usage: commands_test.py BUILD_FOLDER [--list]"""
import json
import pathlib
import re
import subprocess
import sys

import pages
import rules
import session


def shape(line):
    """A line with its numbers and its spacing taken out."""
    return re.sub(r"\s+", " ", re.sub(r"-?\d+(\.\d+)*", "N", line)).strip()


def expected_exit_code(command):
    """What vptzctl's page tells of a command that shows why it failed."""
    failures = {"refused by the service": 1, "there is no option": 2, "cannot connect to the message bus": 3,
                "within the time-out": 4, "is not running": 5}
    if not any(line.startswith("vptzctl: ") for line in command.output):
        return 0
    return next(code for text, code in failures.items() if text in command.output[0])


def complaint(command, exit_code, output):
    if exit_code is None:
        return f"was not reached:\n{output}"
    if exit_code != expected_exit_code(command):
        return f"gave {exit_code}:\n{output}"
    if command.shows_output:
        shapes = [shape(line) for line in output.splitlines()]
        for line in command.output:
            if shape(line) not in shapes:
                return f"did not write\n  {line}\nbut\n{output}"
    return None


def synopsis_complaint(build, text):
    """A synopsis and what --help tells agree about the options."""
    program, *words = text.split()
    path = {"vptzctl": "tools/vptzctl/vptzctl", "vptzd": "service/vptzd"}[program]
    command = []
    while words and re.fullmatch(r"[a-z][a-z0-9-]*", words[0]):
        command.append(words.pop(0))
    helped = subprocess.run([build / path, *command, "--help"], capture_output=True, text=True, timeout=20)
    if helped.returncode != 0:
        return f"--help gives {helped.returncode}: {helped.stderr}"
    missing = [option for option in re.findall(r"--[\w-]+", text)
               if not re.search(re.escape(option) + r"(?![\w-])", helped.stdout)]
    return f"--help does not tell of {', '.join(missing)}" if missing else None


def parse_json(text):
    """One document, or one on each line."""
    try:
        json.loads(text)
    except ValueError:
        for line in text.splitlines():
            json.loads(line)


def block_complaint(block):
    if block.language not in pages.LANGUAGES:
        return "nothing tells what this block is"
    try:
        if block.language == "json":
            parse_json(block.text)
        elif block.language == "python":
            compile(block.text, block.page, "exec")
    except (ValueError, SyntaxError) as error:
        return str(error)
    return None


def check_page(tree, page):
    """The page's commands, each with how it was checked and what is wrong with it."""
    blocks = list(pages.blocks(tree.root, page))
    for block in blocks:
        if block.language not in ("sh", "console", "text"):
            yield f"{page}:{block.line}: a block of {block.language or 'nothing'}", "block", block_complaint(block)
    commands = list(pages.commands(tree.root, page))
    to_run = [command for command in commands if not command.within_sentence and session.is_run(command.text)]
    if to_run:
        for command, result in zip(to_run, session.run(tree.build, blocks, to_run)):
            yield command.place(), "run", complaint(command, *result)
    for command in commands:
        if command in to_run:
            continue
        if command.within_sentence and re.match(r"vptz(ctl|d) ", command.text):
            yield command.place(), "synopsis", synopsis_complaint(tree.build, command.text)
            continue
        try:
            rules.check(tree, command.text)
            yield command.place(), "looked at", None
        except rules.Wrong as wrong:
            yield command.place(), "looked at", str(wrong)


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    root = pages.default_root()
    tree = rules.Tree(root, pathlib.Path(sys.argv[1]).resolve())
    counts, failures = {}, 0
    for page in pages.all_pages(root):
        for place, kind, wrong in check_page(tree, page):
            counts[kind] = counts.get(kind, 0) + 1
            failures += wrong is not None
            if wrong is not None or "--list" in sys.argv:
                print(f"{place}\n    {kind}: {wrong or 'right'}")
    print(", ".join(f"{count} {kind}" for kind, count in sorted(counts.items())), f"; {failures} wrong")
    sys.exit(1 if failures or counts.get("run", 0) < 15 or counts.get("synopsis", 0) < 40 else 0)


main()
