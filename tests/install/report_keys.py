"""The keys of the reports in oru-reports(5) and in the JSON Schema of reports. A key is identified by its path: the
title of the section, then the names of the keys from the document down to it."""

import json
import os
import re
import subprocess

import jsonschema

# The kinds in the manual, and the types that each may have in the schema.
KINDS = {"number": {"integer", "number", "null"}, "text": {"string"}, "number as a text": {"string"},
         "array": {"array", "string"}, "object": {"object", "null"}}


def rendered(page):
    """Returns the lines of a manual as man renders them."""
    environment = dict(os.environ, MANWIDTH="80", LC_ALL="C.UTF-8")
    command = ["man", "--no-hyphenation", "--no-justification", "-E", "UTF-8", "-l", page]
    return subprocess.run(command, env=environment, stdout=subprocess.PIPE, text=True, check=True).stdout.splitlines()


def keys_in(lines):
    """Returns the kind and the description of each key of the rendered manual, by its path, in the manual's order."""
    keys, about_reports, section, above = {}, False, None, []
    for line in lines:
        indentation = len(line) - len(line.lstrip())
        if line and indentation < 5:
            section = line.strip() if indentation == 3 and about_reports else None
            about_reports = line.startswith("REPORTS OF") or (indentation == 3 and about_reports)
            above = []
        elif section and (tag := re.fullmatch(f" +(.+) \\(({'|'.join(KINDS)})\\)", line)):
            above = [key for key in above if key[0] < indentation] + [(indentation, tag[1])]
            keys[(section, *(name for _, name in above))] = [tag[2], ""]
        elif above and indentation == above[-1][0] + 4:
            key = keys[(section, *(name for _, name in above))]
            key[1] = re.sub(" +", " ", f"{key[1]} {line.strip()}").strip()
    return keys


def names(schema_path, manual_path):
    """Returns whether both paths name the same key. Where the manual has an N, the schema has a pattern."""
    def same(schema_key, manual_key):
        if not schema_key.startswith("^"):
            return schema_key == manual_key
        return "N" in manual_key and re.search(schema_key, manual_key.replace("N", "1")) is not None
    return len(schema_path) == len(manual_path) and all(map(same, schema_path, manual_path))


class Schema:
    def __init__(self, path):
        self.root = json.loads(path.read_text(encoding="utf-8"))
        jsonschema.Draft202012Validator.check_schema(self.root)
        self.validator = jsonschema.Draft202012Validator(self.root)
        self.documents = {}  # by title
        for rule in self.root["$defs"]["section"]["allOf"]:
            document = rule["then"]["properties"].get("document", {})
            if "$ref" in document:
                self.documents[rule["if"]["properties"]["title"]["const"]] = document

    def accepts(self, sections):
        return self.validator.is_valid(sections)

    def resolved(self, node):
        while "$ref" in node:
            beside = {name: value for name, value in node.items() if name != "$ref"}
            node = {**self.root["$defs"][node["$ref"].removeprefix("#/$defs/")], **beside}
        return node

    def members(self, node):
        """Returns the keys, or patterns of keys, of the object that the node describes, in order, each with its own
        node. For an array, they are those of its elements."""
        node = self.resolved(node)
        if "items" in node:
            return self.members(node["items"])
        members = {**node.get("properties", {}), **node.get("patternProperties", {})}
        return {name: self.resolved(member) for name, member in members.items()}

    def keys(self):
        """Returns the node of each key by its path."""
        def below(path, node):
            for name, member in self.members(node).items():
                yield path + (name,), member
                yield from below(path + (name,), member)
        return {path: node for title, document in self.documents.items() for path, node in below((title,), document)}

    def objects(self, title, document):
        """Yields for each object in a document its place, whether it is closed, and the paths of its keys, with None
        for a key that the schema does not describe."""
        def below(place, path, node, value):
            node = self.resolved(node)
            if isinstance(value, list):
                for index, element in enumerate(value):
                    yield from below(place + (index,), path, node.get("items", {}), element)
            elif isinstance(value, dict):
                members = self.members(node)
                def step_to(key):
                    matching = (step for step in members if step == key or step[0] == "^" and re.search(step, key))
                    return next(matching, None)
                steps = [step_to(key) for key in value]
                yield place, node.get("additionalProperties") is False, [step and path + (step,) for step in steps]
                for key, step in zip(value, steps):
                    if step is not None:
                        yield from below(place + (key,), path + (step,), members[step], value[key])
        yield from below((), (title,), self.documents[title], document)

    def open_objects(self):
        """Yields the nodes of objects that allow keys that the schema does not describe."""
        def within(node):
            if isinstance(node, list):
                for element in node:
                    yield from within(element)
            elif isinstance(node, dict):
                if "object" in node.get("type", []) and node.get("additionalProperties") is not False:
                    yield node
                for member in node.values():
                    yield from within(member)
        yield from within(self.root)


class Reports:
    """Compares reports, in the form that the reader returns, with the schema and with the manual."""

    def __init__(self, tree):
        self.schema = Schema(tree / "docs/reports.schema.json")
        self.manual = keys_in(rendered(tree / "docs/man/oru-reports.5"))
        self.keys = self.schema.keys()
        order = list(self.manual)
        # For each key of the schema, the positions of that key in the manual; there should be one.
        self.in_manual = {path: [at for at, key in enumerate(order) if names(path, key)] for path in self.keys}
        self.never_found = set(self.keys)

    def complaints(self, sections):
        """Yields what is wrong with the sections of a report: errors of the schema, keys that the schema or the manual
        lacks, and keys in another order than the manual's."""
        for error in self.schema.validator.iter_errors(sections):
            yield f"{error.json_path}: {error.message}"
        for section in sections:
            if section["title"] not in self.schema.documents or section["document"] is None:
                continue
            for place, closed, paths in self.schema.objects(section["title"], section["document"]):
                known = [path for path in paths if path is not None]
                if closed and known != paths:
                    yield f"{section['title']}: a key that the schema does not describe in {place}"
                order = [position for path in known for position in self.in_manual[path]]
                if order != sorted(order):
                    yield f"{section['title']}: not in the manual's order: {known}"
                self.never_found.difference_update(known)
