#!/usr/bin/env python3
"""Turns the message catalogue's PO files into a compiled-in C++ table.

Each PO file holds one language; an entry's msgctxt is the message number, msgid the English text
and msgstr the translation (empty in the English file, where msgid is the text). The language's base
is added to the number, so French 106 is entry 1106.
usage: po2table.py OUTPUT.cpp LANG=BASE:FILE.po ...
"""
import sys


def unquote(line):
    text = line.strip()
    if not (text.startswith('"') and text.endswith('"')):
        raise ValueError("not a quoted string: " + line)
    body = text[1:-1]
    out, i = [], 0
    escapes = {'n': '\n', 'r': '\r', 't': '\t', '"': '"', '\\': '\\'}
    while i < len(body):
        c = body[i]
        if c == '\\' and i + 1 < len(body):
            out.append(escapes.get(body[i + 1], body[i + 1]))
            i += 2
        else:
            out.append(c)
            i += 1
    return ''.join(out)


def entries(path):
    current, field = {}, None
    with open(path, encoding='utf-8') as f:
        for raw in f:
            line = raw.strip()
            if not line or line.startswith('#'):
                if current.get('msgid') is not None and 'msgstr' in current:
                    yield current
                current, field = {}, None
                continue
            for key in ('msgctxt', 'msgid', 'msgstr'):
                if line.startswith(key + ' '):
                    if key == 'msgctxt' and 'msgstr' in current:
                        yield current
                        current = {}
                    field = key
                    current[key] = unquote(line[len(key):])
                    break
            else:
                if field is None:
                    raise ValueError(path + ": stray line: " + line)
                current[field] += unquote(line)
    if current.get('msgid') is not None and 'msgstr' in current:
        yield current


def cpp_string(text):
    out = []
    for byte in text.encode('utf-8'):
        ch = chr(byte)
        if ch == '"' or ch == '\\':
            out.append('\\' + ch)
        elif 32 <= byte < 127:
            out.append(ch)
        else:
            out.append('\\%03o' % byte)
    return '"' + ''.join(out) + '"'


def main():
    output, specs = sys.argv[1], sys.argv[2:]
    table = {}
    for spec in specs:
        base_part, path = spec.split(':', 1)
        base = int(base_part.split('=', 1)[1])
        for entry in entries(path):
            if 'msgctxt' not in entry:
                continue  # the PO header
            number = int(entry['msgctxt'])
            text = entry['msgstr'] or (entry['msgid'] if base == 0 else '')
            if not text:
                continue  # untranslated entries fall back at run time
            table[base + number] = text
    with open(output, 'w', encoding='utf-8') as f:
        f.write('// Generated from resources/*.po by po2table.py. Do not edit.\n')
        f.write('#include "dialogs/MessageTable.h"\n\nnamespace cvn73100 {\n\n')
        f.write('const MessageEntry kMessageTable[] = {\n')
        for number in sorted(table):
            f.write('    {%d, %s},\n' % (number, cpp_string(table[number])))
        f.write('};\n\nconst std::size_t kMessageTableSize = sizeof kMessageTable / sizeof kMessageTable[0];\n\n')
        f.write('}  // namespace cvn73100\n')


if __name__ == '__main__':
    main()
