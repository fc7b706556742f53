#!/usr/bin/env python3
"""Prints a C++ source in which every expression of a .natvis file is a member function of the type that it shows:
natvis_expressions.py FILE. Compiled with -fno-access-control it proves that the types and their members exist."""
import re
import sys
import xml.etree.ElementTree as ElementTree

NAMESPACE = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"
WHOLE_TEXT = {"Item", "Size", "ValuePointer"}  # elements whose text is one expression
TEXT_ONLY = {"Expand", "ArrayItems"}  # elements without an expression of their own
INSTANCE = "std::wstring"  # what a type is compiled with in place of <*>


def expressions(element):
    """Those of an element and what lies below it, without format specifiers."""
    name = element.tag.removeprefix(NAMESPACE)
    if "Condition" in element.attrib:
        yield element.get("Condition")
    text = element.text or ""
    if name == "DisplayString":
        found = re.findall(r"\{([^{}]*)\}", text)
    elif name in WHOLE_TEXT:
        found = [text]
    elif name in TEXT_ONLY:
        found = []
    else:
        sys.exit(f"natvis_expressions.py: unknown element: {name}")
    for expression in found:
        yield re.sub(r",[a-z]+$", "", expression.strip())
    for child in element:
        yield from expressions(child)


print("#include <string>\n#include <tam/tam.h>")
count = 0
for number, shown in enumerate(ElementTree.parse(sys.argv[1]).getroot().iterfind(NAMESPACE + "Type")):
    base = shown.get("Name").replace("<*>", f"<{INSTANCE}>")
    print(f"struct Shown_{number} : {base} {{")
    for element in shown:
        for expression in expressions(element):
            count += 1
            print(f"    void expression_{count}() {{ (void)({expression.replace('$T1', INSTANCE)}); }}")
    print("};")
if count == 0:
    sys.exit(f"natvis_expressions.py: no expression found in {sys.argv[1]}")
