"""Reads the tables of HTML pages for tst_plugindoc: one object per page given,
{"tables": {id: [[cell text, ...], ...]}, "links": {id: [[[href, ...] per cell], ...]},
 "ids": [...], "hrefs": [...], "problems": number of list items}, as JSON on standard output.
Header rows (those with th cells) are left out."""

import json
import sys
from html.parser import HTMLParser


class Reader(HTMLParser):
    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.tables, self.links, self.ids, self.hrefs = {}, {}, [], []
        self.table = self.row = self.cell = None
        self.row_links = self.cell_links = None
        self.header = False
        self.problems = 0

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        if "id" in attributes:
            self.ids.append(attributes["id"])
        if tag == "li":
            self.problems += 1
        if tag == "table":
            self.table = attributes["id"]
            self.tables[self.table] = []
            self.links[self.table] = []
        elif tag == "tr":
            self.row, self.row_links, self.header = [], [], False
        elif tag == "th":
            self.header = True
        elif tag == "td":
            self.cell, self.cell_links = [], []
        elif tag == "a" and "href" in attributes:
            self.hrefs.append(attributes["href"])
            if self.cell is not None:
                self.cell_links.append(attributes["href"])

    def handle_endtag(self, tag):
        if tag == "td":
            self.row.append("".join(self.cell))
            self.row_links.append(self.cell_links)
            self.cell = None
        elif tag == "tr" and not self.header:
            self.tables[self.table].append(self.row)
            self.links[self.table].append(self.row_links)

    def handle_data(self, data):
        if self.cell is not None:
            self.cell.append(data)


pages = []
for path in sys.argv[1:]:
    reader = Reader()
    with open(path, encoding="utf-8") as page:
        reader.feed(page.read())
    reader.close()
    pages.append({"tables": reader.tables, "links": reader.links, "ids": reader.ids, "hrefs": reader.hrefs,
                  "problems": reader.problems})
json.dump(pages, sys.stdout)
