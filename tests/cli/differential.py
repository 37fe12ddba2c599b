#!/usr/bin/env python3
"""Differential test of zatgen's checks of the generated outputs against the real consumers.

Writes random definitions files (seeded, so that a failure reproduces), biased towards what
breaks generated code: shared names, underscores that join, padded decimal, octal and binary
displays, tags with both lists, wide values, bit numbers from 0 to 70, empty names, keywords and
the outputs' own fixed names. For every file zatgen writes the five outputs, and zatgen --check
lists the problems, those of the outputs among them. Then each output is fed to its consumer: the C
header to cc, the C++ enums and lookup tables to c++, the C# file to mcs (and mono), the Lua
tables to lua5.4. A program compiled with each output prints every macro, constant or table entry
the output is made to hold, and the values are compared with the file's.

An output fails when it does not compile or load, or when a value differs. For every output the
failures must be exactly the files for which zatgen reports a problem of that output: no missed
failure, and at most 1% of the files with a reported problem may compile and be right.

    differential.py --zatgen PATH [--files N] [--seed S] [--jobs J] [--keep DIR] [--verbose]
"""

import argparse
import os
import random
import re
import shutil
import subprocess
import sys
import tempfile

MASK64 = (1 << 64) - 1

# The outputs: zatgen's option, the name the problems give them.
OUTPUTS = [
    ("header", "the C header"),
    ("lua", "the Lua script"),
    ("cpp", "the C++ enums header"),
    ("cpp-lut", "the C++ lookup-table header"),
    ("cs", "the C# file"),
]

# ---------------------------------------------------------------- random definitions files

NAME_POOL = [
    "A", "B", "C", "A_B", "B_C", "A_B_C", "C_D", "B", "Mode", "Ten", "X", "X_", "_X", "_", "Y2", "Power", "Ready",
    "Error", "Flags", "Low", "High", "On", "Off", "Level", "State", "Speed", "Bay", "Bay1", "Bay2", "Count",
]

# Names that a generated output takes for keywords or for names of its own.
TRICKY_NAMES = [
    "T", "EnumCount", "TagID", "ToplevelTags", "Type", "Cmd", "ZAT16", "ZAT16DT_Binary",
    "value__", "Bits", "Enums", "Masks", "BitA", "ABits", "AEnums", "AMasks", "lutA", "Flags",
    "int", "and", "end", "nil", "class", "namespace", "string", "object", "local", "function",
    "concept", "requires", "typeof", "goto", "enum", "T_", "__arglist", "C",
]

COMMENTS = ["", "", "Reserved", "it's", "back\\slash", 'say "hi"', "two\nlines", "a]b", "tab\tin", "x"]

DISPLAYS = ["", "", "", "", "4u", "4d", "4", "3", "x", "4x", "o", "y", "8y", "d", "u", "2", "2o"]

TAG_CODES = [0x1001, 0x1002, 0x1003, 0x2001, 0x3001, 0x7001, 0x7002, 0xC001, 0xF001, 0xD101, 0xE101,
             0xD102, 0xE102, 0xE103, 0xA001, 0x8101, 0x0001, 0x9001]

WIDE_VALUES = [0, 1, 2, 7, 8, 9, 10, 11, 64, 100, -1, -5, -10, 2**31 - 1, 2**31, -2**31, -2**31 - 1, 2**32,
               2**63 - 1, 2**63, -2**63, 2**64 - 1, 0x1000]

WIDE_BIT_NUMBERS = list(range(16, 71)) + [23, 24, 30, 31, 31, 32, 33, 63, 64, 70]


class Node:
    def __init__(self, kind, name=None, id=None, display="", comment="", children=None):
        self.kind = kind  # root, tag, enums, enum, bits, bit
        self.name = name  # None or "" when nameless
        self.id = id  # None or the 64-bit pattern
        self.display = display
        self.comment = comment
        self.children = children or []
        self.parent = None


def random_name(rnd):
    r = rnd.random()
    if r < 0.05:
        return None
    if r < 0.8:
        return rnd.choice(NAME_POOL)
    if r < 0.86:
        return rnd.choice(TRICKY_NAMES)
    letters = "ABCabc_"
    first = rnd.choice("ABCab_")
    return first + "".join(rnd.choice(letters + "0123") for _ in range(rnd.randint(0, 4)))


def random_value(rnd):
    r = rnd.random()
    if r < 0.85:
        return rnd.randint(0, 20)
    return rnd.choice(WIDE_VALUES)


def make_file(rnd):
    root = Node("root", display=rnd.choice(DISPLAYS) if rnd.random() < 0.05 else "")
    for _ in range(rnd.randint(1, 8)):
        name = random_name(rnd)
        if name == "Tag":
            name = "Tg"
        code = None if rnd.random() < 0.05 else rnd.choice(TAG_CODES)
        tag = Node("tag", name, code, rnd.choice(DISPLAYS) if rnd.random() < 0.05 else "")
        r = rnd.random()
        lists = []
        if r < 0.35:
            lists = ["enums"]
        elif r < 0.6:
            lists = ["bits"]
        elif r < 0.65:
            lists = ["enums", "bits"]
        for kind in lists:
            lst = Node(kind, display=rnd.choice(DISPLAYS) if rnd.random() < 0.2 else "")
            count = rnd.choice([0, 1, 2, 3, 4, 5, 6])
            run = rnd.random() < 0.4
            start = rnd.choice([0, 1])
            for i in range(count):
                if kind == "enums":
                    vname = random_name(rnd)
                    vid = (start + i) if run else random_value(rnd)
                    if rnd.random() < 0.05:
                        vid = None
                    comment = rnd.choice(COMMENTS) if (not vname or rnd.random() < 0.1) else ""
                    value = Node("enum", vname, None if vid is None else vid & MASK64,
                                 rnd.choice(DISPLAYS) if rnd.random() < 0.05 else "", comment)
                else:
                    bname = random_name(rnd)
                    bid = rnd.randint(0, 15) if rnd.random() < 0.93 else rnd.choice(WIDE_BIT_NUMBERS)
                    if rnd.random() < 0.04:
                        bid = None
                    value = Node("bit", bname, bid, rnd.choice(DISPLAYS) if rnd.random() < 0.05 else "")
                lst.children.append(value)
            tag.children.append(lst)
        root.children.append(tag)
    link(root)
    return root


def link(node):
    for child in node.children:
        child.parent = node
        link(child)


def xml_attr(text):
    return (text.replace("&", "&amp;").replace("<", "&lt;").replace('"', "&quot;")
            .replace("\n", "&#10;").replace("\t", "&#9;"))


def to_xml(root):
    out = ['<?xml version="1.0" encoding="UTF-8"?>\n']

    def element(node, indent):
        attrs = ""
        if node.name:
            attrs += ' name="%s"' % node.name
        if node.id is not None:
            value = node.id
            if node.kind in ("enum", "bit") and value >= 2**63 and random.random() < 0.5:
                value -= 2**64
            attrs += ' id="%s"' % (hex(value) if node.kind == "tag" else str(value))
        if node.comment:
            attrs += ' comment="%s"' % xml_attr(node.comment)
        if node.display:
            attrs += ' display="%s"' % node.display
        tag = "zat16" if node.kind == "root" else node.kind
        if node.children:
            out.append("%s<%s%s>\n" % (indent, tag, attrs))
            for child in node.children:
                element(child, indent + "  ")
            out.append("%s</%s>\n" % (indent, tag))
        else:
            out.append("%s<%s%s/>\n" % (indent, tag, attrs))

    element(root, "")
    return "".join(out)


# ---------------------------------------------------------------- what the outputs hold

DISPLAY_MODES = {"x": 3, "X": 3, "o": 4, "b": 5, "y": 5, "d": 1, "u": 2}


def parse_display(text):
    digits = ""
    i = 0
    while i < len(text) and text[i].isdigit():
        digits += text[i]
        i += 1
    mode = DISPLAY_MODES.get(text[i], 0) if i < len(text) else 0
    return mode, int(digits) if digits else 0


def display_of(node):
    walk = node
    while walk is not None:
        mode, digits = parse_display(walk.display)
        if mode != 0:
            return mode, digits
        walk = walk.parent
    return parse_display(node.display)


def format_number(value, mode, digits):
    prefix = ""
    signed = value - 2**64 if value >= 2**63 else value
    if mode == 1:
        text = str(signed)
    elif mode == 2:
        text = str(value)
    elif mode == 3:
        prefix, text = "0x", "%X" % value
    elif mode == 4:
        prefix, text = "0o", "%o" % value
    elif mode == 5:
        prefix, text = "0y", format(value, "b")
    else:
        text = str(signed)
    return prefix + text.rjust(digits, "0")


def format_id(node):
    mode, digits = display_of(node)
    return format_number(node.id, mode, digits)


def valid(node, kind):
    if node.id is None:
        return False
    if not node.name:
        return kind == "enum" and node.kind == "enum"
    return node.kind == kind


def enum_count(lst):
    count = 0
    nxt = 0
    for child in lst.children:
        if child.id is None:
            continue
        if count == 0:
            first = child.id & 0xFFFFFFFF
            if first > 1:
                return 0
            nxt = first + 1
        else:
            if child.id != nxt:
                return 0
            nxt += 1
        count += 1
    return count


def is_nested(code):
    t = code >> 12
    if t == 8:
        t = code >> 8
    return 12 <= t <= 15


def listing(root):
    """(pairs, nested, plain, with_lists) as every generator lists the top-level tags."""
    first_answer = {}
    for tag in root.children:
        if tag.id is not None and (tag.id >> 12) == 0xE and (tag.id & 0xFFF) not in first_answer:
            first_answer[tag.id & 0xFFF] = tag
    candidates = [t for t in root.children if valid(t, "tag")]
    written = set()
    pairs, nested, plain = [], [], []
    for tag in candidates:
        if ((tag.id >> 12) & 0xF) != 13:
            continue
        answer = 0xE000 | (tag.id & 0xFFF)
        if tag.id in written or answer in written or (answer & 0xFFF) not in first_answer:
            continue
        pairs += [tag, first_answer[answer & 0xFFF]]
        written |= {tag.id, answer}
    for tag in candidates:
        if is_nested(tag.id) and tag.id not in written:
            nested.append(tag)
            written.add(tag.id)
    for tag in candidates:
        if not is_nested(tag.id) and tag.id not in written:
            plain.append(tag)
            written.add(tag.id)
    with_lists = []
    for tag in candidates:
        enums = next((c for c in tag.children if c.kind == "enums"), None)
        bits = next((c for c in tag.children if c.kind == "bits"), None)
        if enums or bits:
            with_lists.append((tag, enums, bits))
    return pairs, nested, plain, with_lists


def expected_c(root):
    """(macro, value) for every macro the C header writes."""
    pairs, nested, plain, with_lists = listing(root)
    out = [("MSG_" + (t.name or ""), t.id) for t in pairs + nested] + [("TAG_" + t.name, t.id) for t in plain]
    for tag, enums, _ in with_lists:
        if enums:
            n = enum_count(enums)
            for v in enums.children:
                if valid(v, "enum") and v.name:
                    out.append(("ENU_%s_%s" % (tag.name, v.name), v.id))
            if n:
                out.append(("CNT_" + tag.name, n))
    for tag, _, bits in with_lists:
        if bits:
            taken = [b for b in bits.children if valid(b, "bit")]
            out += [("BIT_%s_%s" % (tag.name, b.name), b.id) for b in taken]
            out += [("MSK_%s_%s" % (tag.name, b.name), 1 << b.id) for b in taken]
    return out


def expected_cpp(root):
    """(qualified name below ZAT16, value) for every enumerator of the C++ enums header."""
    pairs, nested, plain, with_lists = listing(root)
    out = [("Cmd::" + (t.name or ""), t.id) for t in pairs + nested] + [("Tag::" + t.name, t.id) for t in plain]
    for tag, enums, _ in with_lists:
        if enums:
            taken = [v for v in enums.children if valid(v, "enum")]
            out += [("%s::%s" % (tag.name, v.name or ""), v.id) for v in taken]
            if taken and enum_count(enums):
                out.append(("%s::EnumCount" % tag.name, enum_count(enums)))
    for tag, _, bits in with_lists:
        if bits:
            taken = [b for b in bits.children if valid(b, "bit")]
            out += [("%sBits::%s" % (tag.name, b.name), b.id) for b in taken]
            out += [("%s::%s" % (tag.name, b.name), 1 << b.id) for b in taken]
    return out


def expected_lut(root):
    """(tables, tag rows): tables as (C++ name, [(row name, value)]), tag rows as (code, table)."""
    pairs, nested, plain, with_lists = listing(root)
    tables = [("ToplevelTags", [("ToplevelTags", 0)] + [(t.name or "", t.id) for t in pairs + nested + plain])]
    for tag, enums, _ in with_lists:
        if enums:
            taken = [v for v in enums.children if valid(v, "enum")]
            if taken:
                tables.append((tag.name, [(tag.name, 1)] + [(v.name or "", v.id) for v in taken]))
    for tag, _, bits in with_lists:
        if bits:
            taken = [b for b in bits.children if valid(b, "bit")]
            if taken:
                tables.append((tag.name, [(tag.name, 2)] + [(b.name, b.id) for b in taken]))
    rows = [(0xFFFFFFFF, "ToplevelTags")] + [(t.id, t.name) for t, _, _ in with_lists]
    rows += [(t.id, t.name) for t, _, b in with_lists if b]
    return tables, rows


def expected_cs(root):
    """(type.member, value) for every member of the C# enumerations."""
    pairs, nested, plain, with_lists = listing(root)
    out = [("TagID." + (t.name or ""), t.id) for t in pairs + nested + plain]
    for tag, enums, _ in with_lists:
        if enums:
            out += [("%sEnums.%s" % (tag.name, v.name or ""), v.id) for v in enums.children if valid(v, "enum")]
    for tag, _, bits in with_lists:
        if bits:
            taken = [b for b in bits.children if valid(b, "bit")]
            out += [("%sBits.%s" % (tag.name, b.name), b.id) for b in taken]
            out += [("%sMasks.%s" % (tag.name, b.name), 1 << b.id) for b in taken]
    return out


def expected_lua(root):
    """(table, key, value) for every entry of the Lua tables."""
    pairs, nested, plain, with_lists = listing(root)
    out = [("lutTag", t.name or "", t.id) for t in pairs + nested + plain]
    for tag, enums, _ in with_lists:
        if enums:
            for v in enums.children:
                if v.id is None:
                    continue
                if v.name:
                    out.append(("lut" + tag.name, v.name, v.id))
                elif v.comment:
                    out.append(("lut" + tag.name, '"%s"' % v.comment, v.id))
    for tag, _, bits in with_lists:
        if bits:
            out += [("lutBit" + tag.name, b.name or "", 1 << b.id) for b in bits.children if b.id is not None]
    return out


def same(printed, expected):
    return expected <= MASK64 and (printed & MASK64) == expected


# ---------------------------------------------------------------- the consumers

def run(command, cwd, timeout=600):
    proc = subprocess.run(command, cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=timeout)
    return proc.returncode, proc.stdout.decode("utf-8", "replace")


def c_string(text):
    return '"' + "".join("\\%03o" % b for b in text.encode("utf-8")) + '"'


def compile_parallel(compiler, flags, sources, cwd, jobs):
    """Compiles each source to an object; returns the set of sources that compiled."""
    for source in sources:
        obj = os.path.join(cwd, source[: source.rindex(".")] + ".o")
        if os.path.exists(obj):
            os.remove(obj)
    chunks = [sources[i::jobs] for i in range(jobs) if sources[i::jobs]]
    procs = [subprocess.Popen([compiler] + flags + ["-c"] + chunk, cwd=cwd, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL) for chunk in chunks]
    for p in procs:
        p.wait()
    return {s for s in sources if os.path.exists(os.path.join(cwd, s[: s.rindex(".")] + ".o"))}


def check_native(files, work, jobs, kind):
    """C header, C++ enums or C++ lookup tables: one object per file, linked into one program."""
    c = kind == "header"
    ext = "c" if c else "cpp"
    compiler = "cc" if c else "c++"
    flags = ["-std=c11", "-pedantic-errors"] if c else ["-std=c++20", "-pedantic-errors"]
    printf = 'int printf(const char *, ...);\n' if c else 'extern "C" int printf(const char *, ...);\n'
    sources = []
    expectations = {}
    for index, (path, root) in enumerate(files):
        source = "%s_%d.%s" % (kind.replace("-", ""), index, ext)
        generated = os.path.join(work, "f%d.%s" % (index, {"header": "h", "cpp": "hpp", "cpp-lut": "lut.hpp"}[kind]))
        body = [printf]
        checks = []
        if kind == "header":
            body.append('#include "%s"\n' % generated)
            body.append("void dump_%d(void)\n{\n" % index)
            expected = expected_c(root)
            for name in dict.fromkeys(n for n, _ in expected):
                body.append('    printf("%%s %%llu\\n", %s, (unsigned long long)(%s));\n' % (c_string(name), name))
            checks = expected
        elif kind == "cpp":
            body.append('#include "%s"\n' % generated)
            body.append("void dump_%d()\n{\n" % index)
            expected = expected_cpp(root)
            for name in dict.fromkeys(n for n, _ in expected):
                body.append('    printf("%%s %%llu\\n", %s, (unsigned long long)(ZAT16::%s));\n' % (c_string(name), name))
            checks = expected
        else:
            body.append("struct NameLookupTable { const char *name; long long value; };\n"
                        "struct TagLookupTable { unsigned int code; const NameLookupTable *table; };\n")
            body.append('#include "%s"\n' % generated)
            body.append("void dump_%d()\n{\n" % index)
            tables, rows = expected_lut(root)
            for table in dict.fromkeys(t for t, _ in tables):
                body.append("    for (const NameLookupTable &r : ZAT16::nameLookup%s) printf(\"%%s %%s %%llu\\n\", %s, "
                            "r.name ? r.name : \"(null)\", (unsigned long long)r.value);\n" % (table, c_string(table)))
            body.append("    for (const TagLookupTable &r : ZAT16::tagLookup) printf(\"~ %u %s\\n\", r.code, "
                        "r.table ? r.table[0].name : \"(null)\");\n")
            checks = (tables, rows)
        body.append("}\n")
        with open(os.path.join(work, source), "w") as f:
            f.write("".join(body))
        sources.append(source)
        expectations[index] = checks
    compiled = compile_parallel(compiler, flags, sources, work, jobs)
    ok = sorted(int(re.search(r"_(\d+)\.", s).group(1)) for s in compiled)
    main = [printf]
    for i in ok:
        main.append("void dump_%d(%s);\n" % (i, "void" if c else ""))
    main.append("int main(void)\n{\n")
    for i in ok:
        main.append('    printf("@%d\\n");\n    dump_%d();\n' % (i, i))
    main.append("    return 0;\n}\n")
    with open(os.path.join(work, "main_%s.%s" % (kind.replace("-", ""), ext)), "w") as f:
        f.write("".join(main))
    objects = [s[: s.rindex(".")] + ".o" for s in sources if s in compiled]
    exe = "prog_" + kind.replace("-", "")
    status, text = run([compiler] + flags + ["-o", exe, "main_%s.%s" % (kind.replace("-", ""), ext)] + objects, work)
    if status != 0:
        sys.exit("linking the %s programs failed:\n%s" % (kind, text[:4000]))
    status, text = run(["./" + exe], work)
    if status != 0:
        sys.exit("the %s program failed" % kind)
    printed = {}
    current = None
    for line in text.split("\n"):
        if line.startswith("@"):
            current = int(line[1:])
            printed[current] = []
        elif line:
            printed[current].append(line)
    result = {}
    for index in range(len(files)):
        if index not in printed:
            result[index] = "does not compile"
            continue
        result[index] = judge_native(kind, expectations[index], printed[index])
    return result


def judge_native(kind, checks, lines):
    if kind in ("header", "cpp"):
        values = {}
        for line in lines:
            name, value = line.rsplit(" ", 1)
            values[name] = int(value)
        for name, value in checks:
            if not same(values[name], value):
                return "%s is %d, not %d" % (name, values[name], value)
        return None
    tables, rows = checks
    got = {}
    tag_rows = []
    for line in lines:
        if line.startswith("~ "):
            _, code, name = line.split(" ", 2)
            tag_rows.append((int(code), name))
            continue
        table, rest = line.split(" ", 1)
        name, value = rest.rsplit(" ", 1)
        got.setdefault(table, []).append((name, int(value)))
    for table, entries in tables:
        have = got.get(table, [])
        # Without a row, the end row of the top-level table follows the comment of its first row on
        # the same line, as the format has it: the table then holds its first row alone.
        ends = 0 if table == "ToplevelTags" and len(entries) == 1 else 1
        if len(have) != len(entries) + ends:
            return "nameLookup%s has %d rows" % (table, len(have))
        for (name, value), (hname, hvalue) in zip(entries, have):
            if name != hname or not same(hvalue, value):
                return "nameLookup%s row %s is %s %d, not %d" % (table, name, hname, hvalue, value)
    expected_rows = rows + [(0, "(null)")]
    if [(c, n) for c, n in tag_rows] != expected_rows:
        return "tagLookup differs"
    return None


def cs_ident(name):
    return name


def check_cs(files, work):
    """The C# files: each in a namespace of its own, compiled into one program that prints them."""
    result = {}
    pending = list(range(len(files)))
    sources = {}
    for index, (path, root) in enumerate(files):
        with open(os.path.join(work, "f%d.cs" % index), encoding="utf-8") as f:
            generated = f.read()
        expected = expected_cs(root)
        lines = ["namespace F%d {\n" % index, generated, "\n}\n",
                 "public static class Dump%d {\n  public static void Run() {\n" % index]
        for name in dict.fromkeys(n for n, _ in expected):
            lines.append('    System.Console.WriteLine("%s " + ((long)F%d.%s).ToString());\n' % (name, index, name))
        lines.append("  }\n}\n")
        source = "dump_%d.cs" % index
        with open(os.path.join(work, source), "w", encoding="utf-8") as f:
            f.write("".join(lines))
        sources[index] = (source, expected)
    # mcs compiles one assembly: files whose errors it reports are taken out until the rest compiles.
    while True:
        main = ["public static class Program {\n  public static void Main() {\n"]
        for i in pending:
            main.append('    System.Console.WriteLine("@%d");\n    Dump%d.Run();\n' % (i, i))
        main.append("  }\n}\n")
        with open(os.path.join(work, "main.cs"), "w") as f:
            f.write("".join(main))
        status, text = run(["mcs", "-nowarn:0078,0168,0219", "-out:prog_cs.exe", "main.cs"]
                           + [sources[i][0] for i in pending], work)
        if status == 0:
            break
        failed = {int(m) for m in re.findall(r"^dump_(\d+)\.cs\(", text, re.M)}
        if not failed:
            sys.exit("mcs failed without naming a file:\n" + text[:4000])
        for i in failed:
            result[i] = "does not compile"
        pending = [i for i in pending if i not in failed]
    status, text = run(["mono", "prog_cs.exe"], work)
    if status != 0:
        sys.exit("the C# program failed:\n" + text[:4000])
    printed = {}
    current = None
    for line in text.split("\n"):
        if line.startswith("@"):
            current = int(line[1:])
            printed[current] = {}
        elif line:
            name, value = line.rsplit(" ", 1)
            printed[current][name] = int(value)
    for i in pending:
        result[i] = None
        for name, value in sources[i][1]:
            if not same(printed[i][name], value):
                result[i] = "%s is %d, not %d" % (name, printed[i][name], value)
                break
    return result


def lua_string(text):
    return '"' + "".join("\\%d" % b for b in text.encode("utf-8")) + '"'


def check_lua(files, work):
    """The Lua tables, all loaded by one lua5.4 process, each into a fresh zat16 table."""
    script = ["local function show(t, k)\n  local v = zat16[t] and zat16[t][k]\n"
              "  io.write(math.type(v) or type(v), ' ', tostring(v), '\\n')\nend\n"]
    expectations = {}
    for index, (path, root) in enumerate(files):
        expected = expected_lua(root)
        expectations[index] = expected
        script.append("zat16 = {}\nio.write('@%d\\n')\n" % index)
        script.append("do local f = loadfile(%s)\n  if not f or not pcall(f) then io.write('FAIL\\n') else\n"
                      % lua_string(os.path.join(work, "f%d.lua" % index)))
        for table, key, _ in expected:
            script.append("  show(%s, %s)\n" % (lua_string(table), lua_string(key)))
        script.append("end end\n")
    with open(os.path.join(work, "check.lua"), "w") as f:
        f.write("".join(script))
    status, text = run(["lua5.4", "check.lua"], work)
    if status != 0:
        sys.exit("the Lua check failed:\n" + text[:4000])
    printed = {}
    current = None
    for line in text.split("\n"):
        if line.startswith("@"):
            current = int(line[1:])
            printed[current] = []
        elif line:
            printed[current].append(line)
    result = {}
    for index, expected in expectations.items():
        lines = printed[index]
        if lines == ["FAIL"]:
            result[index] = "does not load"
            continue
        result[index] = None
        for (table, key, value), line in zip(expected, lines):
            kind, text = line.split(" ", 1)
            if kind != "integer" or not same(int(text), value):
                result[index] = "zat16.%s[%r] is %s %s, not %d" % (table, key, kind, text, value)
                break
    return result


# ---------------------------------------------------------------- the run

def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--zatgen", required=True)
    parser.add_argument("--files", type=int, default=300)
    parser.add_argument("--seed", type=int, default=18)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--keep", help="work in this folder and keep it")
    parser.add_argument("--verbose", action="store_true", help="name every missed failure and false alarm")
    args = parser.parse_args()

    for tool in ("cc", "c++", "mcs", "mono", "lua5.4"):
        if not shutil.which(tool):
            print("SKIP: %s is not installed" % tool)
            return 0

    work = args.keep or tempfile.mkdtemp(prefix="zatdiff-")
    os.makedirs(work, exist_ok=True)
    rnd = random.Random(args.seed)
    random.seed(args.seed)
    files = []
    reported = {option: set() for option, _ in OUTPUTS}
    for index in range(args.files):
        root = make_file(rnd)
        path = os.path.join(work, "f%d.zatdef" % index)
        with open(path, "w", encoding="utf-8") as f:
            f.write(to_xml(root))
        files.append((path, root))
        arguments = [args.zatgen]
        for option, ext in (("header", "h"), ("lua", "lua"), ("cpp", "hpp"), ("cpp-lut", "lut.hpp"), ("cs", "cs")):
            arguments += ["--" + option, os.path.join(work, "f%d.%s" % (index, ext))]
        proc = subprocess.run(arguments + [path], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        if proc.returncode != 0:
            sys.exit("zatgen failed on %s:\n%s" % (path, proc.stderr.decode("utf-8", "replace")))
        # What a user sees: the problems that zatgen --check lists.
        proc = subprocess.run([args.zatgen, "--check", path], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        if proc.returncode != 0:
            sys.exit("zatgen --check failed on %s:\n%s" % (path, proc.stderr.decode("utf-8", "replace")))
        problems = [line for line in proc.stderr.decode("utf-8", "replace").split("\n") if ": problem: " in line]
        for option, title in OUTPUTS:
            if any(": " + title + " " in line for line in problems):
                reported[option].add(index)

    results = {
        "header": check_native(files, work, args.jobs, "header"),
        "lua": check_lua(files, work),
        "cpp": check_native(files, work, args.jobs, "cpp"),
        "cpp-lut": check_native(files, work, args.jobs, "cpp-lut"),
        "cs": check_cs(files, work),
    }

    ok = True
    print("%-8s %6s %9s %9s %7s %13s" % ("output", "files", "failures", "reported", "missed", "false alarms"))
    for option, _ in OUTPUTS:
        failures = {i for i, why in results[option].items() if why}
        missed = failures - reported[option]
        false_alarms = reported[option] - failures
        print("%-8s %6d %9d %9d %7d %13d" % (option, len(files), len(failures), len(reported[option]),
                                             len(missed), len(false_alarms)))
        if missed or len(false_alarms) * 100 > max(1, len(reported[option])):
            ok = False
        if args.verbose or missed or false_alarms:
            for i in sorted(missed):
                print("  missed %s: %s: %s" % (option, files[i][0], results[option][i]))
            for i in sorted(false_alarms):
                print("  false alarm %s: %s" % (option, files[i][0]))
    if not args.keep:
        shutil.rmtree(work, ignore_errors=True)
    print("PASS" if ok else "FAIL")
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
