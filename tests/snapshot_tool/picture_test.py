#!/usr/bin/python3
"""Compares the texts of a picture with those of the file from which it was drawn.

usage: picture_test.py DOT SVG"""

import re
import sys
import xml.dom.minidom


def main():
    source, picture = sys.argv[1:]
    with open(source, encoding="utf-8") as file:
        labels = re.findall(r'label="((?:[^"\\]|\\.)*)"', file.read())
    # Quotes are the only escapes in these texts.
    expected = [line.replace('\\"', '"') for label in labels for line in label.split("\\n")]
    drawn = [text.firstChild.data for text in xml.dom.minidom.parse(picture).getElementsByTagName("text")]
    if sorted(drawn) != sorted(expected):
        sys.exit(f"{picture}: not drawn from {source}; run scripts/picture")
    print(f"{len(drawn)} texts are where they should be")


main()
