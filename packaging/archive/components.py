#!/usr/bin/python3
"""Lists whose code the static programs contain: the Debian packages of the files that the linker read,
according to its maps, with the version and licence of each.

usage: components.py OUT NAME VERSION SOURCE_LICENSE HEADER... -- MAP...
Writes OUT/components.spdx (SPDX 2.3, tag and value), about the archive NAME of our VERSION. Copies the
copyright file of each component, and the licences that these only name, to OUT/licenses. HEADERs belong
to libraries that consist of headers alone. $SOURCE_DATE_EPOCH is the date in the list."""

import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import time
import urllib.parse

# By Debian source package: its title, and the licence of the part that is linked.
LICENSES = {
    "gcc-12": ("GCC runtime", "GPL-3.0-or-later WITH GCC-exception-3.1"),
    "gcc-14": ("GCC runtime", "GPL-3.0-or-later WITH GCC-exception-3.1"),
    "glaze": ("glaze", "MIT"),
    "glib2.0": ("GLib", "LGPL-2.1-or-later"),
    "glibc": ("GNU C Library", "LGPL-2.1-or-later"),
    "libffi": ("libffi", "MIT"),
    "llvm-toolchain-19": ("LLVM libc++, libc++abi, libunwind", "Apache-2.0 WITH LLVM-exception"),
    "pcre2": ("PCRE2", "BSD-3-Clause"),
}


def linked_files(link_map):
    """Returns the archives and object files outside the build folder that a map of lld or ld names."""
    text = pathlib.Path(link_map).read_text(encoding="utf-8", errors="replace")
    return set(re.findall(r"(?:^|\s)(/[^\s():]+\.(?:a|o))(?=[(:])", text, re.MULTILINE))


def package_of(file):
    """Returns the Debian package that a file belongs to. dpkg may know the file by another of its paths."""
    real = os.path.realpath(file)
    for name in dict.fromkeys((real, file, real.removeprefix("/usr"), "/usr" + file)):
        found = subprocess.run(["dpkg-query", "-S", name], text=True, stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL)
        if found.returncode == 0:
            return found.stdout.split(": ")[0].split(",")[0]
    sys.exit(f"components.py: {file} belongs to no Debian package")


def source_of(package):
    fields = subprocess.run(["dpkg-query", "-W", "-f", "${source:Package} ${source:Version}", package],
                            text=True, stdout=subprocess.PIPE, check=True).stdout.split()
    return fields[0], fields[1]


def copy_terms(package, target):
    """Copies a package's copyright file, and each of Debian's common licences that it refers to."""
    text = pathlib.Path("/usr/share/doc", package.split(":")[0], "copyright").read_text(encoding="utf-8")
    target.write_text(text, encoding="utf-8")
    for name in re.findall(r"/usr/share/common-licenses/([\w.+-]*[\w+])", text):
        common = pathlib.Path("/usr/share/common-licenses", name)
        shutil.copyfile(common, target.parent / f"{name}.txt")


def package_lines(identifier, name, version, license_, *more):
    return ["", f"PackageName: {name}", f"SPDXID: {identifier}", f"PackageVersion: {version}",
            "PackageDownloadLocation: NOASSERTION", "FilesAnalyzed: false",
            f"PackageLicenseConcluded: {license_}", "PackageLicenseDeclared: NOASSERTION",
            "PackageCopyrightText: NOASSERTION", *more]


def main():
    out, name, version, our_license = sys.argv[1:5]
    split = sys.argv.index("--")
    headers, maps = sys.argv[5:split], sys.argv[split + 1:]
    files = set(headers).union(*map(linked_files, maps))
    packages = {package_of(file) for file in files}
    components = {}  # by source package: its version and its binary packages
    for package in sorted(packages):
        source, source_version = source_of(package)
        if source not in LICENSES:
            sys.exit(f"components.py: LICENSES has no licence of {source}")
        components.setdefault(source, (source_version, []))[1].append(package)
    if not {"glib2.0", "glibc"} <= components.keys():
        sys.exit("components.py: the link maps name no GLib or no C library")

    licenses = pathlib.Path(out, "licenses")
    licenses.mkdir(parents=True)
    lines, relations = [], []
    for source, (source_version, binaries) in sorted(components.items()):
        title, license_ = LICENSES[source]
        copy_terms(binaries[0], licenses / f"{source}.copyright")
        identifier = "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", source)
        lines += package_lines(
            identifier, title, source_version, license_, f"PackageSourceInfo: Debian source package "
            f"{source} {source_version}, from {', '.join(binaries)}; its terms: licenses/{source}.copyright",
            f"ExternalRef: PACKAGE-MANAGER purl pkg:deb/debian/{source}@{urllib.parse.quote(source_version, safe='~')}?arch=source")
        relations.append(f"Relationship: SPDXRef-oru-cgi-applet STATIC_LINK {identifier}")

    digest = hashlib.sha256("\n".join(lines).encode()).hexdigest()[:16]
    created = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(int(os.environ["SOURCE_DATE_EPOCH"])))
    head = ["SPDXVersion: SPDX-2.3", "DataLicense: CC0-1.0", "SPDXID: SPDXRef-DOCUMENT",
            f"DocumentName: {name}", f"DocumentNamespace: https://example.org/spdx/{name}-{digest}",
            "Creator: Tool: oru-cgi-applet packaging/archive/components.py", f"Created: {created}"]
    ours = package_lines("SPDXRef-oru-cgi-applet", "oru-cgi-applet", version, our_license)
    relations.insert(0, "Relationship: SPDXRef-DOCUMENT DESCRIBES SPDXRef-oru-cgi-applet")
    text = "\n".join(head + ours + lines + [""] + relations) + "\n"
    pathlib.Path(out, "components.spdx").write_text(text, encoding="utf-8")


main()
