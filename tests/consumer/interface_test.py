#!/usr/bin/env python3
"""Every function that an installed header declares is exported by the shared library: what the
headers declare and the static library defines must stand in cmake/exported-symbols.
usage: interface_test.py PROJECT STATIC-LIBRARY"""
import glob
import re
import subprocess
import sys

# Private, but called by public functions whose bodies stand in the header.
CALLED_INLINE = {
    "dax::SimpleXML::countElements",
    "dax::SimpleXML::descend",
    "dax::SimpleXML::read",
}
TOKEN = re.compile(r'"(?:\\.|[^"\\])*"|[A-Za-z_]\w*|::|[^\s\w]')


def functions_declared(text):
    """The functions with a name outside of private sections, as dax::SimpleXML::open."""
    text = re.sub(r"//[^\n]*|/\*.*?\*/|^\s*#[^\n]*", "", text, flags=re.S | re.M)
    found = set()
    scopes = []  # of each open brace: its name, "" for a block; whether what follows is public
    statement = []
    parentheses = 0
    for token in TOKEN.findall(text):
        in_block = bool(scopes) and scopes[-1][0] == ""
        if token == "{":
            scopes.append(scope_of(statement) if not in_block and not parentheses else ["", False])
            statement = [] if scopes[-1][0] else statement
        elif token == "}":
            if scopes.pop()[0] != "" or (statement and "(" in statement):
                statement = []
        elif in_block:
            continue
        elif token == ";" and not parentheses:
            statement = []
        elif token == ":" and statement and statement[-1] in ("public", "private", "protected"):
            scopes[-1][1] = statement[-1] == "public"
            statement = []
        else:
            is_first = token == "(" and "(" not in statement
            if is_first and statement and all(is_public for _, is_public in scopes):
                tilde = "~" if statement[-2:-1] == ["~"] else ""
                found.add("::".join([name for name, _ in scopes] + [tilde + statement[-1]]))
            parentheses += (token == "(") - (token == ")")
            statement.append(token)
    if scopes or parentheses:
        sys.exit("FAILED: a header's braces do not pair up for this test")
    return found


def scope_of(statement):
    """What the brace after `statement` opens."""
    for keyword in ("namespace", "class", "struct"):
        if keyword in statement and "(" not in statement:
            name = "".join(statement[statement.index(keyword) + 1:])
            return [name, keyword != "class"]
    return ["", False]


def scoped_name(symbol):
    """Of "dax::f[abi:cxx11](int)": "dax::f"."""
    return re.sub(r"\[abi:\w+\]", "", symbol.split("(")[0])


def main():
    project, library = sys.argv[1:]
    declared = set()
    headers = glob.glob(f"{project}/src/sdk/*.h") + glob.glob(f"{project}/src/imgproc/*.h")
    for header in headers:
        with open(header, encoding="utf-8") as file:
            declared |= functions_declared(file.read())
    with open(f"{project}/cmake/exported-symbols", encoding="utf-8") as file:
        listed = set(file.read().splitlines())
    symbols = subprocess.run(["nm", "-C", "--defined-only", "--extern-only", library], check=True,
                             capture_output=True, text=True).stdout
    defined = set(re.findall(r"^[0-9a-f]+ T (.+)$", symbols, flags=re.M))

    failures = [f"not exported: {symbol}" for symbol in sorted(defined - listed)
                if scoped_name(symbol) in declared]
    # The other way round: what this test overlooks in a header shows here.
    failures += [f"exported, but in no public declaration: {symbol}" for symbol in sorted(listed)
                 if scoped_name(symbol) not in declared | CALLED_INLINE]
    failures += [f"exported, but not defined: {symbol}" for symbol in sorted(listed - defined)]
    failures += [f"called by no public function any more: {name}"
                 for name in sorted(CALLED_INLINE - {scoped_name(symbol) for symbol in listed})]
    if failures:
        sys.exit("FAILED: " + "\n".join(failures))
    count = len([symbol for symbol in defined if scoped_name(symbol) in declared])
    print(f"{count} functions of {len(headers)} headers are exported")


main()
