"""Takes the commands out of the pages."""
import pathlib
import re
import shlex
from typing import NamedTuple

# The languages that a block may have. A block without one could be anything.
LANGUAGES = {"sh", "console", "text", "cpp", "cmake", "ini", "json", "mermaid", "python"}

# What makes a piece of code within a sentence a command and not a name.
COMMAND_WORD = re.compile(
    r"(?:\./|\.ci/|scripts/|build/)\S+|"
    r"sudo|apt|apt-get|systemctl|journalctl|cmake|ctest|vptzctl|vptzd|sqlite3|mosquitto\S*|c\+\+|g\+\+|git|docker|cat")


class Block(NamedTuple):
    page: str
    line: int
    language: str
    text: str


class Command(NamedTuple):
    page: str
    line: int
    text: str
    output: list = []  # what the page shows below it
    shows_output: bool = False
    within_sentence: bool = False

    def place(self):
        return f"{self.page}:{self.line}: {self.text}"

    def words(self):
        return shlex.split(self.text, comments=True)


def all_pages(root):
    found = [*root.glob("*.md"), *root.glob("docs/**/*.md"), *root.glob("platform/*/*.md"), *root.glob("tools/**/*.md"),
             *root.glob("fuzz/*.md"), *root.glob("examples/*.md"), *root.glob("bindings/**/*.md")]
    return sorted(path.relative_to(root) for path in found)


def blocks(root, page):
    lines = (root / page).read_text().splitlines()
    number = 0
    while number < len(lines):
        opening = re.match(r"\s*```(\w*)", lines[number])
        number += 1
        if not opening:
            continue
        begin = number
        while lines[number].strip() != "```":
            number += 1
        yield Block(str(page), begin + 1, opening[1], "\n".join(lines[begin:number]))
        number += 1


def shell_commands(block):
    """Commands as a shell would read them: with here-documents, loops and continued lines whole."""
    lines = block.text.splitlines()
    number = 0
    while number < len(lines):
        begin, text = number, lines[number]
        number += 1
        here = re.search(r"<<(\w+)", text)
        ends = (lambda: text.endswith("\n" + here[1])) if here else \
               (lambda: re.search(r"^done\b", text, re.M)) if text.startswith("for ") else \
               (lambda: not text.endswith("\\"))
        while not ends():
            text += "\n" + lines[number]
            number += 1
        if text.strip() and not text.lstrip().startswith("#"):
            yield Command(block.page, block.line + begin, text)


def console_commands(block):
    """What stands behind "$ ", each with the output below it."""
    command, output = None, []
    for number, line in enumerate(block.text.splitlines()):
        if not line.startswith("$ "):
            output.append(line)
            continue
        if command:
            yield command._replace(output=output)
        command, output = Command(block.page, block.line + number, line[2:], [], True), []
    yield command._replace(output=output)


def commands_within_sentences(root, page):
    """Pieces of code that begin like a command and have arguments, or name a script."""
    inside = False
    for number, line in enumerate((root / page).read_text().splitlines(), 1):
        if line.lstrip().startswith("```"):
            inside = not inside
        for piece in [] if inside else re.findall(r"`([^`]+)`", line):
            first, *others = piece.split() or [""]
            while re.fullmatch(r"[A-Z_]+=\S+", first) and others:
                first, *others = others
            if not COMMAND_WORD.fullmatch(first):
                continue
            if others or first.startswith("./") or re.fullmatch(r"(scripts|\.ci)/[\w-]+", first):
                yield Command(str(page), number, piece, within_sentence=True)


def commands(root, page):
    for block in blocks(root, page):
        if block.language == "sh":
            yield from shell_commands(block)
        elif block.language == "console":
            yield from console_commands(block)
        elif block.language == "text" and re.match(r"(vptzd|vptzctl) \[", block.text):
            yield Command(block.page, block.line, block.text, within_sentence=True)
    yield from commands_within_sentences(root, page)


def default_root():
    return pathlib.Path(__file__).resolve().parents[2]
