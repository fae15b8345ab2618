"""Tests the page that `xdm show --html` writes, in headless Chromium."""
import base64
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

from browser import Browser

XDM = os.environ["XDM_TOOL"]

LIBRARY = """<xdm version="1.0">
  <element name="library">
    <attribute name="city"/>
    <element name="shelf">
      <attribute name="subject"/>
      <element name="book" decides="true">
        <attribute name="isbn"/>
        <element name="title"/>
        <element name="author"/>
      </element>
    </element>
  </element>
</xdm>"""
COLUMNS = ["--column", "/library/shelf/book/title", "--group-column", "/library/shelf/@subject=about"]

# The ratio of WCAG 2 between the colour of each element with a text of its own and the background behind it.
CONTRASTS = r"""
const channels = (colour) => colour.match(/[\d.]+/g).map(Number);
const light = (colour) => {
  const [r, g, b] = channels(colour).map((c) => c / 255).map((c) => c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4);
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
};
const background = (element) => {
  const colour = getComputedStyle(element).backgroundColor;
  return channels(colour)[3] === 0 ? background(element.parentElement) : colour;
};
const hasText = (element) => [...element.childNodes].some((child) => child.nodeType === 3 && child.data.trim());
return [...document.body.querySelectorAll('*')].filter((element) => hasText(element) && element.offsetParent).map((element) => {
  const [low, high] = [light(getComputedStyle(element).color), light(background(element))].sort((a, b) => a - b);
  return [(high + 0.05) / (low + 0.05), element.className + ' ' + element.textContent.slice(0, 30)];
});"""


def nested(levels):
    return "<element name='e'>" * levels + "</element>" * levels


class ShowPage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.stop)

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.browser.prefer_colours("light")

    def show(self, model=LIBRARY, options=COLUMNS):
        page = self.folder / "page.html"
        subprocess.run([XDM, "show", "-", "--html", page, *options], input=model, text=True, check=True)
        self.browser.open(page)
        self.addCleanup(lambda: self.assertEqual(self.browser.complaints(), []))

    def query(self, direction):
        command = [XDM, "query", direction, "-", *COLUMNS]
        return subprocess.run(command, input=LIBRARY, capture_output=True, text=True, check=True).stdout

    def text(self, selector):
        return self.browser.run("return document.querySelector(arguments[0]).textContent", selector)

    def texts(self, selector):
        return self.browser.run(
            "return [...document.querySelectorAll(arguments[0])].map((one) => one.textContent)", selector)

    def lines(self):
        return self.texts("#tree .node .name")

    def selected(self):
        return self.text('#tree [aria-selected="true"] .name')

    def focused(self):
        return self.browser.run("""
            const active = document.activeElement.getAttribute('aria-activedescendant');
            return active && document.getElementById(active).querySelector('.name').textContent;""")

    def focus_tree(self):
        self.browser.run("document.querySelector('#tree').focus()")

    def test_shows_the_tree_with_the_row_and_the_columns(self):
        self.show()
        self.assertEqual(self.texts("#tree .node"), [
            "library", "@city", "shelf", "@subjectabout: none, group 1", "bookrow", "@isbn", "titletitle: string", "author"])
        self.assertEqual(self.texts("#tree .mark.row"), ["row"])
        self.assertEqual(self.texts("#columns th, #columns td"), [
            "Name", "XPath", "Kind", "Type", "Group",
            "title", "/library/shelf/book/title", "element", "string", "",
            "about", "/library/shelf/@subject", "attribute", "none", "1"])

    def test_shows_both_queries_byte_for_byte_and_in_colours(self):
        self.show()
        self.assertEqual(self.text("#to-rows code"), self.query("to-rows"))
        self.assertEqual(self.text("#from-rows code"), self.query("from-rows"))
        self.assertEqual(self.texts("#to-rows .keyword")[:3], ["xquery", "version", "declare"])
        self.assertEqual(self.texts("#to-rows .tag")[0], "<table>")
        self.assertIn("$row", self.texts("#to-rows .variable"))

    def test_loads_nothing(self):
        self.show()
        self.assertEqual(self.browser.run("return performance.getEntriesByType('resource').map((one) => one.name)"), [])

    def test_starts_at_the_row_and_moves_by_arrow_keys(self):
        self.show()
        self.focus_tree()
        self.assertEqual(self.focused(), "book")
        moves = [("ArrowDown", "@isbn"), ("ArrowUp", "book"), ("ArrowRight", "@isbn"), ("ArrowLeft", "book"),
                 ("End", "author"), ("ArrowDown", "author"), ("Home", "library"), ("ArrowUp", "library"), ("s", "shelf")]
        for key, node in moves:
            self.browser.press(key)
            self.assertEqual(self.focused(), node, key)
        self.assertEqual(self.text("#xpath"), "/library/shelf")

    def test_opens_and_closes_nodes_by_keys(self):
        self.show()
        self.focus_tree()
        self.browser.press("ArrowLeft")
        self.assertEqual(self.lines(), ["library", "@city", "shelf", "@subject", "book"])
        self.assertEqual(self.browser.run("return document.querySelector('[aria-selected=true]').ariaExpanded"), "false")
        self.browser.press("Enter")
        self.assertEqual(self.lines()[-3:], ["@isbn", "title", "author"])
        self.browser.press("Home", "Enter")
        self.assertEqual(self.lines(), ["library"])
        self.browser.press("ArrowRight")
        self.assertEqual(len(self.lines()), 8)

    def test_opens_and_closes_nodes_by_clicks(self):
        self.show()
        self.browser.click('#tree [data-index="2"] .name')
        self.assertEqual(self.lines(), ["library", "@city", "shelf"])
        self.browser.click("#expand-all")
        self.assertEqual(len(self.lines()), 8)
        self.browser.click("#collapse-all")
        self.assertEqual(self.lines(), ["library"])

    def test_tells_assistive_programs_where_a_node_stands(self):
        self.show()
        self.assertEqual(self.browser.run("""
            const book = document.querySelector('#tree [data-index="4"]');
            return [book.role, book.ariaLevel, book.ariaPosInSet, book.ariaSetSize, book.ariaExpanded];"""),
            ["treeitem", "3", "2", "2", "true"])
        self.assertEqual(self.browser.run("return document.querySelector('#tree').getAttribute('aria-activedescendant')"),
                         "node-4")

    def test_finds_nodes_that_are_hidden(self):
        self.show()
        self.browser.click("#collapse-all")
        self.browser.press("/", *"t")
        self.assertEqual((self.selected(), self.text("#matches")), ("@city", "1 of 4"))
        self.browser.press("Enter", "Enter")
        self.assertEqual((self.selected(), self.text("#matches")), ("title", "3 of 4"))
        self.browser.press(*"itle")
        self.assertEqual((self.selected(), self.text("#matches")), ("title", "1 of 1"))
        self.browser.press("Escape")
        self.assertEqual(self.focused(), "title")
        self.browser.press("/", *"none")
        self.assertEqual(self.text("#matches"), "no match")

    def test_goes_from_a_column_to_its_node(self):
        self.show()
        self.browser.click("#collapse-all")
        self.browser.click("#columns tbody tr:nth-child(2) button")
        self.assertEqual(self.focused(), "@subject")

    def test_copies_queries_and_xpaths(self):
        self.show()
        for section, direction in (("#to-rows", "to-rows"), ("#from-rows", "from-rows")):
            self.browser.click(section + " button")
            self.assertEqual(self.browser.clipboard(), self.query(direction))
            self.assertEqual(self.text("#status"), "Query copied")
        self.browser.click("#copy-xpath")
        self.assertEqual(self.browser.clipboard(), "/library/shelf/book")

    def test_shows_why_a_query_cannot_be_made(self):
        self.show(options=[])
        message = ("XDM1441: No columns are selected, so there is nothing to query. "
                   "Select at least one node as a column.")
        self.assertEqual(self.texts(".details .problem"), [message, message])
        self.assertEqual(self.text("#columns"), "No columns are selected.")

    def test_takes_names_for_text_only(self):
        hostile = """</script><script>document.title = 'hostile'</script><img src=x onerror="document.title='hostile'">"""
        name = hostile.replace("&", "&amp;").replace("<", "&lt;").replace('"', "&quot;")
        model = f'<xdm version="1.0"><element name="a" decides="true"><element name="{name}"/></element></xdm>'
        self.show(model, ["--column", f"/a=<b>'\"&amp;</script>{hostile}"])
        self.assertEqual(self.lines(), ["a", hostile])
        self.assertEqual(self.text("#columns .link"), f"<b>'\"&amp;</script>{hostile}")
        self.assertEqual(self.browser.run("return [document.title, document.scripts.length, document.images.length]"),
                         ["standard input - model", 2, 0])

    def test_holds_a_hundred_thousand_nodes(self):
        leaves = "".join(f"<element name='n{i}'/>" for i in range(99))
        branches = "".join(f"<element name='w{i}'>{leaves}</element>" for i in range(1000))
        self.show(f'<xdm version="1.0"><element name="a">{branches}</element></xdm>', [])
        self.assertEqual(self.lines(), ["a"])
        self.browser.click("#expand-all")
        self.focus_tree()
        self.browser.press("End")
        self.assertEqual(self.text("#xpath"), "/a/w999/n98")
        self.assertEqual(self.lines()[-1], "n98")
        self.browser.press("/", *"w77")
        self.assertEqual((self.selected(), self.text("#matches")), ("w77", "1 of 11"))
        self.assertLess(self.browser.run("return document.querySelectorAll('*').length"), 1000)

    def test_holds_a_thousand_levels(self):
        self.show(f'<xdm version="1.0">{nested(999)}</xdm>', [])
        self.browser.click("#expand-all")
        self.focus_tree()
        self.browser.press("End")
        self.assertEqual(self.text("#xpath"), "/e" * 999)
        self.assertEqual(self.browser.run("return document.querySelector('[aria-selected=true]').ariaLevel"), "999")

    def test_is_readable_in_light_and_in_dark(self):
        self.show()
        for scheme in ("light", "dark"):
            self.browser.prefer_colours(scheme)
            contrasts = self.browser.run(CONTRASTS)
            self.assertGreater(len(contrasts), 50)
            self.assertGreaterEqual(min(contrasts), [4.5], scheme)

    def test_has_no_sideways_scrolling(self):
        self.show()
        self.assertTrue(self.browser.run(
            "return document.documentElement.scrollWidth <= document.documentElement.clientWidth"))


def take_screenshots(folder):
    """Renews the pictures of docs/images."""
    root = pathlib.Path(__file__).parents[2]
    browser = Browser()
    with tempfile.TemporaryDirectory() as temporary:
        page = pathlib.Path(temporary) / "page.html"
        subprocess.run([XDM, "show", "examples/library-map.xml", "--html", page], cwd=root, check=True)
        for scheme in ("light", "dark"):
            browser.prefer_colours(scheme)
            browser.open(page)
            pathlib.Path(folder, f"show-{scheme}.png").write_bytes(base64.b64decode(browser.screenshot()))
    browser.stop()


if __name__ == "__main__":
    if sys.argv[1:2] == ["--screenshots"]:
        take_screenshots(sys.argv[2])
    else:
        unittest.main(verbosity=2)
