#!/usr/bin/env python3
"""The checks of the documentation site notice what they are there for.
usage: site_test.py SOURCE_TREE"""
import pathlib
import sys
import tempfile
import unittest

SOURCE_TREE = pathlib.Path(sys.argv.pop(1))
sys.path.insert(0, str(SOURCE_TREE / "docs" / "site"))
import finish  # noqa: E402
import pages  # noqa: E402


class AMadeSite(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        (self.folder / "there.html").write_text('<h1 id="heading">There</h1>')

    def complaints(self, body):
        (self.folder / "here.html").write_text(body)
        site = {path.name: finish.Page(path.read_text()) for path in self.folder.glob("*.html")}
        return list(finish.complaints_about("here.html", site, self.folder))

    def test_links_to_pages_headings_and_other_machines_are_right(self):
        self.assertEqual(self.complaints('<a id="a"></a><a href="#a">a</a> <a href="there.html">b</a>'
                                         '<a href="there.html#heading">c</a> <a href="https://example.org/">d</a>'), [])

    def test_a_link_to_a_page_that_is_not_there_is_noticed(self):
        self.assertEqual(self.complaints('<a href="gone.html">gone</a>'), ["here.html: gone.html leads nowhere"])

    def test_a_link_to_a_heading_that_is_not_there_is_noticed(self):
        self.assertEqual(self.complaints('<a href="there.html#gone">gone</a>'),
                         ["here.html: there.html#gone: the page has no such place"])

    def test_a_picture_that_is_not_there_is_noticed(self):
        self.assertEqual(self.complaints('<object data="gone.svg"></object>'), ["here.html: gone.svg leads nowhere"])

    def test_what_a_browser_would_fetch_from_another_machine_is_noticed(self):
        for body in ('<script src="https://example.org/a.js"></script>', '<img src="//example.org/a.png">',
                     '<link rel="stylesheet" href="http://example.org/a.css">'):
            self.assertEqual(len([line for line in self.complaints(body) if "another machine" in line]), 1, body)

    def test_a_style_that_fetches_a_font_from_another_machine_is_noticed(self):
        (self.folder / "style.css").write_text("@font-face { src: url(https://example.org/font.woff2); }")
        self.assertEqual(len(list(finish.fetched_by_styles(self.folder))), 1)


class APageOfTheTree(unittest.TestCase):
    def setUp(self):
        pages.complaints.clear()
        self.page = pages.PAGES[pages.ROOT / "docs" / "connection.md"]

    def test_links_lead_to_the_places_in_the_site(self):
        for target, address in (("devices.md", "devices.html"), ("#time-outs", "connection.html#connection-time-outs"),
                                ("../platform/dorv_bus/README.md#settings", "dorv-bus.html#dorv-bus-settings"),
                                ("../include/vptz/vptz_client.h", "vptz__client_8h.html"),
                                ("../LICENSE", "files/LICENSE.txt"), ("../examples/", "examples-list.html")):
            self.assertEqual(pages.address(self.page, target), address)
        self.assertEqual(pages.complaints, [])

    def test_a_link_that_leads_nowhere_is_noticed(self):
        pages.address(self.page, "gone.md")
        pages.address(self.page, "devices.md#gone")
        self.assertEqual(len(pages.complaints), 2)

    def test_every_page_is_in_a_chapter(self):
        chapters = pages.chapters()
        self.assertEqual(pages.complaints, [])
        self.assertEqual([title for title, _ in chapters][:6],
                         ["Start", "Use", "Command line", "Service", "Platform", "Decisions"])

    def test_a_page_that_no_chapter_has_is_noticed(self):
        lost = pages.ROOT / "docs" / "lost.md"
        pages.PAGES[lost] = self.page
        self.addCleanup(pages.PAGES.pop, lost)
        pages.chapters()
        self.assertEqual(pages.complaints, ["docs/index.md: no chapter has docs/lost.md"])


if __name__ == "__main__":
    unittest.main()
