#!/usr/bin/env python3
"""pages OUTPUT: makes of the tree's pages what Doxygen reads, in OUTPUT/pages, and the
header of every page of the site with the navigation, OUTPUT/header.html.

docs/index.md is the table of contents: each of its headings is a chapter, and what a
chapter links to is in it. A page gets a name of its own (connection.html), each heading
an anchor, and links to pages, headings, headers and files lead to their places in the
site. Complains of a link that leads nowhere and of a page that no chapter has."""
import html
import os
import pathlib
import re
import sys

import schema

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
INDEX = ROOT / "docs" / "index.md"
PATTERNS = ("README.md", "CHANGELOG.md", "CONTRIBUTING.md", "docs/*.md", "docs/decisions/*.md",
            "platform/*/README.md", "fuzz/README.md")
SOURCES = [path for pattern in PATTERNS for path in sorted(ROOT.glob(pattern))]
# Those of the reference, as in the Doxyfile.
HEADERS = [header for folder in ("include/vptz", "platform/dorv_bus/include", "platform/zerklog/include")
           for header in sorted(ROOT.glob(f"{folder}/**/*.h"))]
EXAMPLES = sorted(path for path in (ROOT / "examples").iterdir() if path.suffix in (".cc", ".py"))
LINK = re.compile(r"(!?)\[([^]]*)\]\(([^) ]+)\)")
TABLE_OF_CONTENTS_FROM = 4  # headings

complaints = []


def name_of(path):
    """The name of a page in the site, without ".html"."""
    if path == INDEX:
        return "index"
    if path.parent.name == "decisions":
        return "decision-" + path.stem
    folder = path.parent.name if path.name == "README.md" and path.parent != ROOT else ""
    return folder.replace("_", "-") or path.stem.lower()


def anchor_of(heading):
    """What a link to a heading names, as the usual viewers of such pages make it."""
    return re.sub(r"[^a-z0-9 _-]", "", heading.lower()).replace(" ", "-")


def is_fence(line):
    return line.lstrip().startswith("```")


def with_prose(text, change):
    """The text with what lies outside of programs changed; links may run over the ends of lines."""
    parts = re.split(r"(?m)(^ *```[^\n]*\n.*?^ *```$)", text, flags=re.S)
    return "".join(part if index % 2 else change(part) for index, part in enumerate(parts))


def prose_lines(text):
    """The lines, each with whether it is prose and not part of a program."""
    inside = False
    for line in text.split("\n"):
        if is_fence(line):
            inside = not inside
        yield line, not inside and not is_fence(line)


def numbered(anchors):
    """Headings of the same name get a number from the second on, as in the usual viewers."""
    return [anchor + (f"-{anchors[:place].count(anchor)}" if anchor in anchors[:place] else "")
            for place, anchor in enumerate(anchors)]


class Page:
    def __init__(self, path):
        self.path, self.name, self.text = path, name_of(path), path.read_text()
        found = [re.match(r"(#+) +(.*)", line) for line, is_prose in prose_lines(self.text) if is_prose]
        headings = [(len(match[1]), match[2]) for match in found if match]
        self.title = headings[0][1]
        self.chapters = sum(level == 2 for level, _ in headings)
        self.anchors = numbered([anchor_of(heading) for _, heading in headings])

    def id_of(self, anchor):
        return f"{self.name}-{anchor}"


PAGES = {path: Page(path) for path in SOURCES}
# Rows of the database whose names are also English words; Doxygen would link each.
CLASSES = sorted({name for header in HEADERS for name in
                  re.findall(r"^class (?:\w+_API )?(?:\[\[.*?\]\] )?([A-Z][a-z]+)\b", header.read_text(), re.M)})


def html_name(file_name):
    """As Doxygen names the page of a header."""
    return file_name.replace("_", "__").replace(".", "_8")


def html_name_of_program(path):
    return path.name.replace(".", "_8") + "-example.html"


def copy_of(path):
    """A file that is no page is in the site as a text."""
    return "files/" + path.relative_to(ROOT).as_posix().replace("/", "_") + ".txt"


def address(source, target):
    """Where a link of a page leads in the site; the copies that it needs are made later."""
    file_part, _, anchor = target.partition("#")
    path = pathlib.Path(os.path.normpath(source.path.parent / file_part)) if file_part else source.path
    if path.is_dir():
        return {"examples": "examples-list.html", "decisions": "index.html#index-decisions"}.get(path.name, "files.html")
    if not path.is_file():
        complaints.append(f"{source.path.relative_to(ROOT)}: {target} leads nowhere")
        return target
    if path in HEADERS:
        return html_name(path.name) + ".html"
    if path not in PAGES:
        copies.add(path)
        return copy_of(path)
    page = PAGES[path]
    if anchor and anchor not in page.anchors:
        complaints.append(f"{source.path.relative_to(ROOT)}: {target}: there is no such heading")
    return page.name + ".html" + (f"#{page.id_of(anchor)}" if anchor else "")


copies = set()


def rewritten_link(source, match):
    is_image, text, target = match.groups()
    if re.match(r"[a-z]+:", target):
        return match[0]
    if is_image:
        return f"![{text}]({pathlib.Path(target).name})"
    return f'<a href="{address(source, target)}">{text}</a>'


def unlinked(text):
    """A class's name in prose is a word, unless it is between backticks."""
    parts = re.split(r"(^#.*$|`[^`]*`|<[^>]*>|\]\([^)]*\))", text, flags=re.M)
    names = re.compile(r"(?<![\w%])(" + "|".join(CLASSES) + r")\b")
    return "".join(part if index % 2 else names.sub(r"%\1", part) for index, part in enumerate(parts))


def unmarked(heading):
    """Doxygen shows the marks of a name in a heading as they are."""
    return heading.replace("`", "")


def unnumbered(title):
    """A number at the beginning is a part of the title; Doxygen would begin a list."""
    return re.sub(r"^(\d+)\. ", r"\1\. ", title)


def rewritten(page):
    lines, started, anchors = [], False, iter(page.anchors)
    for line, is_prose in prose_lines(page.text):
        heading = re.match(r"(#+) +(.*)", line) if is_prose else None
        anchor = next(anchors) if heading else None
        if heading and not started:
            started = True
            lines.append(f"# {unnumbered(heading[2])} {{#{'mainpage' if page.path == INDEX else page.name}}}")
            if page.chapters >= TABLE_OF_CONTENTS_FROM and page.path != INDEX:
                lines += ["", "[TOC]"]
        elif heading:
            lines.append(f"{heading[1]} {unmarked(heading[2])} {{#{page.id_of(anchor)}}}")
        else:
            lines.append(line)
    return with_prose("\n".join(lines), lambda text: unlinked(LINK.sub(lambda match: rewritten_link(page, match), text)))


def chapters():
    """The chapters of the table of contents: title and pages, each page in its first one."""
    found, seen = [], {INDEX}
    for line, is_prose in prose_lines(PAGES[INDEX].text):
        if line.startswith("## "):
            found.append((line[3:], []))
        for _, _, target in LINK.findall(line) if is_prose and found else []:
            path = pathlib.Path(os.path.normpath(INDEX.parent / target))
            if path in PAGES and path not in seen:
                found[-1][1].append(PAGES[path])
                seen.add(path)
    complaints.extend(f"docs/index.md: no chapter has {path.relative_to(ROOT)}" for path in PAGES if path not in seen)
    return found


REFERENCE = [("VptzClient", "classVptzClient.html"), ("CVptzDevice", "classCVptzDevice.html"),
             ("Classes and records", "annotated.html"), ("Headers", "files.html")]


def entry(title, target):
    return f'<li><a href="$relpath^{target}">{html.escape(title)}</a></li>'


# The last chapters are long or seldom read; site.js unfolds the one that the reader is in.
FOLDED = ("Decisions", "Changing it")
# In the navigation a page has its title, unless that says nothing beside the others.
SHORT_TITLES = {"readme": "The project", "platform": "On an appliance", "service": "The service vptzd"}


def chapter(title, entries):
    state = "" if title in FOLDED else " open"
    return (f"<details{state}><summary>{html.escape(title)}</summary>\n<ul>\n" + "\n".join(entries) + "\n</ul></details>")


def navigation():
    parts = [f'<ul>\n{entry("Documentation", "index.html")}\n</ul>']
    for title, pages in chapters():
        entries = [entry(SHORT_TITLES.get(page.name, page.title), page.name + ".html") for page in pages]
        if title == "Start":
            entries.append(entry("Example programs", "examples-list.html"))
        parts.append(chapter(title, entries))
        if title == "Use":
            parts.append(chapter("Reference", [entry(*target) for target in REFERENCE]))
    return "\n".join(parts)


def purpose_of(example):
    """The first sentence or two of a program: its first comment."""
    text = example.read_text()
    if example.suffix == ".py":
        return re.search(r'"""(.*?)"""', text, re.S)[1]
    comment = re.match(r"(?:// ?.*\n)+", text)[0]
    return " ".join(re.sub(r"(?m)^// ?", "", comment).split("\n\n")[0].split())


def examples_pages():
    """The list of the programs, and Doxygen's commands that show each of them."""
    rows = [f'| <a href="{html_name_of_program(path)}">{path.name}</a> | {purpose_of(path)} |' for path in EXAMPLES]
    listing = "\n".join(["# Example programs {#examples-list}", "",
                         "Whole programs, each short enough to be read at once. In the source tree they stand in",
                         "`examples/`; the installed documentation holds them, too.", "",
                         "| Program | What it does |", "|---|---|"] + rows) + "\n"
    commands = "\n".join(f"/** @example {path.name}\n{purpose_of(path)} */" for path in EXAMPLES) + "\n"
    return listing, commands


def with_drawings(text, page, folder):
    """Diagrams of tables become drawings beside the page."""
    def drawn(match):
        path = folder / f"{page.name}-tables.svg"
        schema.draw(match[1], path)
        return f"![The tables and what refers to what]({path.name})"
    return re.sub(r"(?ms)^```mermaid\n(.*?)^```$", drawn, text)


def write(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text)


def main(output):
    folder = output / "pages"
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.iterdir():
        old.unlink()
    for page in PAGES.values():
        write(folder / f"{page.name}.md", with_drawings(rewritten(page), page, folder))
    listing, commands = examples_pages()
    write(folder / "examples-list.md", listing)
    write(folder / "examples.dox", commands)
    template = (ROOT / "docs" / "site" / "header.html").read_text()
    write(output / "header.html", template.replace("@navigation@", navigation()))
    for path in copies:
        write(output / "html" / copy_of(path), path.read_text())
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
