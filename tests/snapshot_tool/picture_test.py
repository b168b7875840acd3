#!/usr/bin/python3
"""Compares the texts of a picture with those of the boxes that it was drawn from.

usage: picture_test.py DOT SVG"""

import re
import sys
import xml.dom.minidom


def main():
    source, picture = sys.argv[1:]
    with open(source, encoding="utf-8") as file:
        labels = re.findall(r'label="((?:[^"\\]|\\.)*)"', file.read())
    # None of the texts holds what the language has escapes for, but quotes.
    expected = [line.replace('\\"', '"') for label in labels for line in label.split("\\n")]
    drawn = [text.firstChild.data for text in xml.dom.minidom.parse(picture).getElementsByTagName("text")]
    if sorted(drawn) != sorted(expected):
        sys.exit(f"{picture}: drawn from something else than {source}; run scripts/picture")
    print(f"{len(drawn)} texts are where they should be")


main()
