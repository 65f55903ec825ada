#!/usr/bin/python3
"""Turns a tool's --help text (read from standard input) into a man page (roff on standard
output), so that the help stays the one source of both.

    lingomat --help | help_to_man.py --name lingomat --version 1.0.0 > lingomat.1

The help's first line is the usage; the lines up to the first blank one describe the tool;
"Heading:" lines start sections ("Files:" and "Examples:" the man page's own FILES and
EXAMPLES); lines indented up to six spaces that start with "-" or an upper-case name name
options and arguments (in FILES and EXAMPLES any such line names a file or a command), and
the text after two spaces, or on the more indented lines below, explains them."""

import argparse
import re
import sys


def roff(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return "\\&" + text if text.startswith((".", "'")) else text


# Help headings that are sections of a man page of their own.
MAN_SECTIONS = {"Files": "FILES", "Examples": "EXAMPLES"}


def is_term(line, any_word=False):
    """An option or argument name, a little indented; its explanation may follow after two
    spaces. Explanations that continue on the next lines are indented further. With
    `any_word`, any line so indented is a term (a file or a command)."""
    indent = len(line) - len(line.lstrip(" "))
    stripped = line.strip()
    return 0 < indent <= 6 and (any_word or stripped.startswith("-") or
                                re.match(r"[A-Z][A-Z_.]*(\s{2,}|$)", stripped) is not None)


def convert(help_text, name, version):
    lines = help_text.rstrip("\n").split("\n")
    usage = re.sub(r"^Usage:\s*", "", lines[0])
    index = 1
    summary = []
    while index < len(lines) and lines[index].strip():
        summary.append(lines[index].strip())
        index += 1
    out = [f'.TH {name.upper()} 1 "" "{name} {version}" "User Commands"',
           ".SH NAME", f"{roff(name)} \\- {roff(summary[0].rstrip('.') if summary else name)}",
           ".SH SYNOPSIS", roff(usage), ".SH DESCRIPTION"]
    out.extend(roff(line) for line in summary)
    in_man_section = False
    for line in lines[index:]:
        stripped = line.strip()
        if not stripped:
            out.append(".PP")
        elif not line.startswith(" ") and stripped.endswith(":"):
            heading = stripped[:-1]
            in_man_section = heading in MAN_SECTIONS
            out.append(".SH " + MAN_SECTIONS[heading] if in_man_section else ".SS " + roff(heading))
        elif is_term(line, in_man_section):
            match = re.match(r"(\S.*?)(?:\s{2,}(.*))?$", stripped)
            term, rest = match.group(1), match.group(2) or ""
            out.extend([".TP", "\\fB" + roff(term) + "\\fR"])
            if rest:
                out.append(roff(rest))
        else:
            out.append(roff(stripped))
    return "\n".join(out) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--name", required=True)
    parser.add_argument("--version", required=True)
    args = parser.parse_args()
    help_text = sys.stdin.read()
    if not help_text.startswith("Usage:"):
        sys.exit("help_to_man: the help text does not start with 'Usage:'")
    sys.stdout.write(convert(help_text, args.name, args.version))


if __name__ == "__main__":
    main()
