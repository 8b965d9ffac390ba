#!/usr/bin/env python3
"""finish OUTPUT: completes the site that Doxygen has left in OUTPUT/html, and checks it.

A class's full descriptions get the chapters of its header, which Doxygen shows in its
lists only; in the pages the names of operations lead to them; the search gets its
index. Complains of links that lead nowhere and of whatever a browser would fetch from
another machine."""
import html
import html.parser
import json
import pathlib
import re
import sys
import urllib.parse
import xml.etree.ElementTree

CHAPTER = '<div class="groupHeader">'
# The pages mean the first of these where several have an operation of the same name.
FIRST_SCOPES = ("VptzClient", "CVptzDevice", "")


def without_repetition(text):
    """A class's first sentence stands once: at the top, or under "About" where more follows."""
    about = re.search(r'<a name="details".*?<div class="textblock"><p >(.*?)</p>\n</div>', text, re.S)
    top = re.search(r'<div class="contents">\s*<p>(.*?)(\s*<a href="[^"]*#details">More...</a>)</p>\n', text)
    if not top:
        return text
    if about and about[1].strip() == top[1].strip():
        text = text.replace(about[0], '<a id="details"></a>')
        return text.replace(top[2], "", 1)
    return text.replace(top[0], '<div class="contents">\n', 1)


def with_one_heading(text):
    """Constructors and operations are one part: "Operations in full"."""
    heading = '<h2 class="groupheader">Operations in full</h2>\n'
    first, found, rest = text.partition(heading)
    return first + found + rest.replace(heading, "")


def slug(title):
    return "chapter-" + re.sub(r"[^a-z]+", "-", title.lower()).strip("-")


def chapters_of(text):
    """Each chapter's title and the anchors of the members in it."""
    found = []
    for row in re.finditer(re.escape(CHAPTER) + r'(.*?)</div>|<tr class="memitem:(\w+)">', text):
        if row[1]:
            found.append((row[1], []))
        elif row[2] and found:
            found[-1][1].append(row[2])
    return found


def with_chapters(text):
    chapters = chapters_of(text)
    for title, members in chapters:
        text = text.replace(f"{CHAPTER}{title}</div>", f'<div class="groupHeader" id="{slug(title)}">{title}</div>', 1)
        places = [place for place in (text.find(f'<a id="{member}" name="{member}"></a>\n<h2 class="memtitle">')
                                      for member in members) if place >= 0]
        if places:
            first = min(places)
            text = text[:first] + f'<h2 class="chapter">{title}</h2>\n' + text[first:]
    if len(chapters) > 3:
        rows = "".join(f'<li class="level1"><a href="#{slug(title)}">{title}</a></li>\n' for title, _ in chapters)
        contents = f'<div class="toc"><h3>On this page</h3>\n<ul>{rows}</ul></div>\n'
        text = text.replace('<div class="contents">\n', '<div class="contents">\n' + contents, 1)
    return text


def text_of(element, name):
    return element.findtext(name) or ""


def plain(title):
    """Titles of pages and headings hold marks of their own."""
    return html.unescape(re.sub(r"<[^>]*>", "", title)).replace("\\.", ".")


class Names:
    """What has a place of its own in the site, of the file that Doxygen writes for other sites."""

    def __init__(self, path):
        self.entries = []  # name, what it belongs to or is, address
        for compound in xml.etree.ElementTree.parse(path).getroot():
            self.add(compound, compound.get("kind"), text_of(compound, "filename"))

    def add(self, compound, kind, file_name):
        name = text_of(compound, "name")
        if kind == "page":
            page = file_name if file_name.endswith(".html") else file_name + ".html"
            title = plain(text_of(compound, "title") or name)
            self.entries.append((title, "page", page))
            self.entries += [(plain(anchor.get("title")), title, f"{anchor.get('file')}#{anchor.text}")
                             for anchor in compound.findall("docanchor") if anchor.get("title")]
        elif kind in ("class", "struct", "union"):
            self.entries.append((name, kind, file_name))
            self.add_members(compound, name)
        elif kind == "file":
            self.entries.append((name, "header", file_name))
            self.add_members(compound, "")

    def add_members(self, compound, scope):
        for member in compound.findall("member"):
            if member.get("kind") in ("friend", "slot"):
                continue
            address = f"{text_of(member, 'anchorfile')}#{text_of(member, 'anchor')}"
            self.entries.append((text_of(member, "name"), scope, address))

    def written_pages(self):
        """Those that people wrote, as files in the site."""
        return {address for _, scope, address in self.entries if scope == "page"}

    def index(self):
        entries = sorted({(name, scope or "function or value", address) for name, scope, address in self.entries})
        return "const searchIndex = " + json.dumps(entries, ensure_ascii=False, separators=(",", ":")) + ";\n"

    def addresses(self):
        """Where the names between a page's backticks lead."""
        found = {}
        for wanted in FIRST_SCOPES:
            for name, scope, address in self.entries:
                if scope == wanted:
                    found.setdefault(name, address)
        for name, scope, address in self.entries:
            if scope in ("class", "struct"):
                found[name] = address
        return found


def with_linked_names(text, addresses):
    """Names between backticks lead to what they name, in text but not in links or headings."""
    def linked(match):
        if match[1] is None or match[2] not in addresses:
            return match[0]
        return f'<a class="el" href="{addresses[match[2]]}">{match[1]}</a>'
    return re.sub(r"<a .*?</a>|<h\d.*?</h\d>|(<code>(?:VptzClient::|CVptzDevice::)?([A-Z]\w+)(?:\([^<]*\))?</code>)",
                  linked, text, flags=re.S)


def with_short_names(text):
    """A short name is not broken at the end of a line; a page's contents are called so."""
    text = re.sub(r"<code>(?=[^<]{1,24}</code>)", '<code class="short">', text)
    return text.replace("<h3>Table of Contents</h3>", "<h3>On this page</h3>")


def with_linked_pages(text, written_pages):
    """Comments name pages as files of the source tree."""
    def linked(match):
        page = match[1] + ".html"
        return f'<a href="{page}">{match[0]}</a>' if page in written_pages else match[0]
    return re.sub(r"\bdocs/([a-z-]+)\.md\b", linked, text)


class Page(html.parser.HTMLParser):
    """What a page refers to, and the places in it."""

    def __init__(self, text):
        super().__init__()
        self.links, self.fetched, self.places = set(), set(), {""}
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        given = {name: value or "" for name, value in attributes}
        self.places.update(given[name] for name in ("id", "name") if name in given)
        target = given.get("href", given.get("src", given.get("data", "")))
        if not target or target.startswith("javascript:"):
            return
        (self.links if tag in ("a", "area") else self.fetched).add(target)


def is_elsewhere(target):
    return bool(urllib.parse.urlsplit(target).scheme) or target.startswith("//")


def complaints_about(name, pages, folder):
    for target in sorted(pages[name].fetched):
        if is_elsewhere(target):
            yield f"{name}: fetches {target} from another machine"
    for target in sorted(pages[name].links | pages[name].fetched):
        if is_elsewhere(target):
            continue
        path, _, place = urllib.parse.unquote(target).partition("#")
        path = path or name
        if not (folder / path).is_file():
            yield f"{name}: {target} leads nowhere"
        elif path in pages and place not in pages[path].places:
            yield f"{name}: {target}: the page has no such place"


def without_folding(text):
    """Lists are shown whole, so that the site needs none of Doxygen's scripts."""
    text = re.sub(r' onclick="[^"]*"', "", text)
    return re.sub(r'<div class="levels">.*?</div>|<span id="arr_[^>]*>.*?</span>|<img [^>]*alt="[-+]"/>&#160;', "", text)


def remove_unused(folder, pages):
    """Doxygen lays pictures, styles and scripts beside the pages that these do not use."""
    used = {target for page in pages.values() for target in page.fetched} | {"search-index.js"}
    for path in folder.glob("*.*"):
        if path.suffix in (".png", ".svg", ".css", ".js") and path.name not in used:
            path.unlink()


def fetched_by_styles(folder):
    for path in sorted(folder.rglob("*.css")):
        for target in re.findall(r"url\(['\"]?([^)'\"]+)|@import ['\"]([^'\"]+)", path.read_text()):
            if is_elsewhere("".join(target)) and not "".join(target).startswith("data:"):
                yield f"{path.name}: fetches {''.join(target)} from another machine"


def finish(folder, names):
    addresses, written_pages = names.addresses(), names.written_pages()
    pages = {}
    for path in sorted(folder.glob("*.html")):
        text = old = path.read_text()
        text = without_folding(text)
        text = with_chapters(with_one_heading(without_repetition(text)))
        if path.name in written_pages:
            text = with_short_names(with_linked_names(text, addresses))
        elif not path.name.endswith("_source.html"):
            text = with_linked_pages(text, written_pages)
        if text != old:
            path.write_text(text)
        pages[path.name] = Page(text)
    remove_unused(folder, pages)
    complaints = list(fetched_by_styles(folder))
    for name in pages:
        complaints += complaints_about(name, pages, folder)
    return complaints


def main(output):
    names = Names(output / "site.tag")
    (output / "html" / "search-index.js").write_text(names.index())
    complaints = finish(output / "html", names)
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
