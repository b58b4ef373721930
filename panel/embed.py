#!/usr/bin/env python3
"""embed.py OUT FILE...: writes the page's files as a C++ table, see PageFiles.h."""
import gzip
import os
import sys

TYPES = {
    ".html": "text/html; charset=utf-8",
    ".css": "text/css; charset=utf-8",
    ".mjs": "text/javascript; charset=utf-8",
    ".svg": "image/svg+xml",
}
LINE = 16  # bytes on each line


def array(name, content):
    rows = (content[i : i + LINE] for i in range(0, len(content), LINE))
    lines = "\n".join("    " + "".join(f"{byte}," for byte in row) for row in rows)
    return f"const unsigned char {name}[] = {{\n{lines}\n}};\n"


def main(out, files):
    arrays, rows = [], []
    for number, path in enumerate(files):
        with open(path, "rb") as file:
            arrays.append(array(f"kFile{number}", gzip.compress(file.read(), mtime=0)))
        name = os.path.basename(path)
        kind = TYPES[os.path.splitext(name)[1]]
        rows.append(
            f'    {{"/{name}", "{kind}",\n'
            f"     {{reinterpret_cast<const char*>(kFile{number}), sizeof kFile{number}}}}},\n"
        )
    with open(out, "w", encoding="utf-8") as source:
        source.write(
            '#include "PageFiles.h"\n\n#include <algorithm>\n#include <iterator>\n\n'
            "namespace panel {\nnamespace {\n\n" + "\n".join(arrays) +
            "\nconst PageFile kFiles[] = {\n" + "".join(rows) + "};\n\n}  // namespace\n\n"
            "const PageFile* pageFile(std::string_view path) {\n"
            "  const auto* const found = std::find_if(std::begin(kFiles), std::end(kFiles),\n"
            "      [&](const PageFile& file) { return file.path == path; });\n"
            "  return found == std::end(kFiles) ? nullptr : found;\n}\n\n}  // namespace panel\n"
        )


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2:])
