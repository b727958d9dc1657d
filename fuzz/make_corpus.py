#!/usr/bin/python3
"""Writes the seed inputs of every fuzz target under fuzz/corpus/<target>/ from the examples of the unit tests.

Run it again after changing an input layout of a target; the files it writes are checked in.
"""
import json
import pathlib
import struct

ROOT = pathlib.Path(__file__).resolve().parent / "corpus"


def write(target, name, data):
    if isinstance(data, str):
        data = data.encode("latin-1")
    folder = ROOT / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(data)


# --- address_string: a flag byte (1 DTR-only, 2 start from a serial port), then the text ---
addresses = [
    "GPIB0::7::INSTR", "gpib2::15", "GPIB0xx7::INSTR", "GPIB0::007::INSTR", "GPIB1::30::whatever",
    "GPIB0::7.6::INSTR", "GPIB0::31::INSTR", "GPIB0::99999999999999999999::INSTR", "GPIB4::7::INSTR",
    "GPIB0:: 7::INSTR", "COM1", "COM1::", "com2 :: baud=19200", "COM3::Handshake=DTR_DSR,Baud=38400",
    "COM1::Size=8,Parity=NONE,Stop=1,Baud=2400", "COM 4 :: Baud = 1200", "COM4::Baud=57600,Handshake=DTR_DSR",
    "COM1::Baud=019200", "COM1::Baud=19200,,Handshake=DTR_DSR", "COM1::Baud=19200,Baud=2400", "COMx", "COM12",
    "LPT1", "",
]
for i, text in enumerate(addresses):
    write("address_string", f"plain-{i:02}", b"\x00" + text.encode())
for i, text in enumerate(["COM1::Handshake=DTR_DSR", "COM2::Baud=2400,Handshake=dtr_dsr", "COM1",
                          "COM1::Handshake=XON_XOFF", "GPIB3::0::INSTR"]):
    write("address_string", f"dtr-only-{i:02}", b"\x03" + text.encode())


# --- search_criteria: a mode byte, then an image (even modes) or an encoded Variant (odd modes) ---
def default_image(serial_rows=None):
    image = bytearray([255] * 164)
    image[0:4] = bytes(4)
    image[132:136] = bytes(4)
    for port in range(4):
        image[140 + 6 * port:146 + 6 * port] = struct.pack("<iBB", 9600, 1, 2)
    return bytes(image)


def var_bool(value):
    return bytes([1, 1 if value else 0])


def var_long(value):
    return bytes([3]) + struct.pack("<i", value)


def var_array(items):
    return bytes([8, len(items)]) + b"".join(items)


def default_tables(baud=9600, handshake=2):
    bools = lambda value, n: var_array([var_bool(value)] * n)
    return var_array([
        bools(False, 4), bools(True, 4), var_array([bools(True, 31)] * 4), bools(False, 4), bools(True, 4),
        var_array([var_array([var_long(baud), var_long(1), var_long(handshake)])] * 4),
    ])


write("search_criteria", "image-default", b"\x00" + default_image())
write("search_criteria", "image-dtr-only-serial", b"\x16" + default_image())
changed = bytearray(default_image())
changed[1] = 255
changed[8 + 3 * 31 + 30] = 0
changed[152:156] = struct.pack("<i", 57600)
changed[146 + 5] = 3
write("search_criteria", "image-changed", b"\x18" + bytes(changed))
write("search_criteria", "image-short", b"\x00" + default_image()[:163])
write("search_criteria", "tables-default", b"\x01" + default_tables())
write("search_criteria", "tables-serial", b"\x11" + default_tables(2400, 4))
write("search_criteria", "tables-bad-baud", b"\x01" + default_tables(4800))
write("search_criteria", "bag-image-as-variant", b"\x03" + bytes([6, 164]) + default_image())
write("search_criteria", "bag-dtr-only-text", b"\x07" + bytes([5, 5]) + b"maybe")
write("search_criteria", "bag-id-array", b"\x0b" + var_array([]))

# --- idn_reply: records of a position byte, the reply and the address, each line-fed ---
rows = [
    ("ABC,MODEL 73135D,123,A.01", "GPIB0::5::INSTR"), (" ACME , 73199B ,1,A", "COM2"),
    ("ACME,model 73105b,1,A", "COM1"), ("ACME,73105B", "GPIB1::30::INSTR"), ("GARBAGE", "COM3"),
    ("", "GPIB0::20::INSTR"), ("ABC,73135DX", "COM4"), (",73105B", "GPIB0::7::INSTR"), ("ABC,731", "COM1"),
    ("ABC,73135d,X,Y", "GPIB0::1::INSTR"), ("73135D,ABC,1,2", "GPIB0"), ("garbage\x01\xff", "GPIB0::5"),
]
for i, (reply, address) in enumerate(rows):
    write("idn_reply", f"row-{i:02}", bytes([0]) + f"{reply}\n{address}\n".encode("latin-1"))
write("idn_reply", "inserted", b"".join(bytes([0 if i < 3 else 130]) + f"{r}\n{a}\n".encode("latin-1")
                                        for i, (r, a) in enumerate(rows[:5])))

# --- setup_scp: whole native setup files ---
def scp_header(type_="scp", version="1", length="2"):
    rest = ("|" + type_ + "|" + version + "|M|Corvane Technologies||V|c|KSR Standard Setup File, Version: 1||||"
            + length + "|")
    tail = len(rest) - 1
    n = tail + 2
    while len(str(n)) + 1 + tail != n:
        n += 1
    return str(n) + rest


learn = bytes((i * 7) & 255 for i in range(1000))
write("setup_scp", "example",
      b"95|scp|1|73135D|Corvane Technologies||A.01.02|test|KSR Standard Setup File, Version: 1||||1000|" + learn)
write("setup_scp", "capital-type", scp_header("SCP") + "ab")
write("setup_scp", "version-2", scp_header("scp", "2") + "ab")
write("setup_scp", "length-beyond-file", scp_header("scp", "1", "5000") + "ab")
write("setup_scp", "length-beyond-32-bits", scp_header("scp", "1", "99999999999999") + "ab")
write("setup_scp", "negative-length", scp_header("scp", "1", "-2") + "ab")
write("setup_scp", "header-off-by-one", "80" + scp_header()[2:] + "ab")
write("setup_scp", "cut-in-header", scp_header()[:40])
write("setup_scp", "no-learn-string", scp_header("scp", "1", "0"))

# --- setup_stp: whole Wrenfold setup files ---
stp = {
    "maker-cvn": b"STP1.10\n12\n  my notes  \ncvn73135D\n:SYSTEM:SETUP \x01\x02\x03",
    "other-maker": b"stp1.1\n-7\nc\nxyz54\n:system:setup ab",
    "carriage-returns": b"stp1.10\n12\r\nnote\r\nCVN73135D\r\n:SYSTEM:SETUP ab",
    "no-data": b"stp1.10\n1\n\nCVN1\n:SYSTEM:SETUP ",
    "line-feeds-in-data": b"stp1.10\n1\n\nab\n:SYSTEM:SETUP \n\n",
    "long-rom-version": b"stp1.1234\n1\nc\nCVN1\n:SYSTEM:SETUP ab",
    "abbreviated-command": b"stp1.10\n1\nc\nCVN1\n:SYST:SET ab",
    "line-2-beyond-32-bits": b"stp1.10\n4294967296\nc\nCVN1\n:SYSTEM:SETUP ab",
    "cut-in-line-4": b"stp1.10\n1\nc\nCVN1",
}
for name, data in stp.items():
    write("setup_stp", name, data)

# --- block_reader: a behaviour byte (see the target), then what the channel delivers ---
def block(data):
    digits = str(len(data))
    return b"#" + str(len(digits)).encode() + digits.encode() + data


binary = b"\0\n\r#9\xff"
blocks = {
    "plain": b"\x00" + block(b"ABCDE") + b"\n",
    "crlf": b"\x00" + block(b"ABCDE") + b"\r\n",
    "eoi-only": b"\x00" + block(b"ABCDE"),
    "binary": b"\x00" + block(binary) + b"\n",
    "empty": b"\x00#10\n",
    "over-small-cap": b"\x10" + block(b"x" * 17) + b"\n",
    "lying-huge": b"\x00#9999999999",
    "cut-short": b"\x00#210ABCD",
    "non-digit-length": b"\x00#21AABCD\n",
    "indefinite": b"\x00#0ABCDE\n",
    "not-a-block": b"\x00" + b"1.5E-3\n",
    "data-after": b"\x00" + block(b"ABCDE") + b"X\n",
    "serial-9600": b"\x04" + struct.pack("<i", 9600) + block(b"learn string") + b"\n",
    "vanishes": b"\x02#3100" + b"x" * 50,
    "piecemeal": b"\x80\x03" + block(b"0123456789") + b"\n",
    "lying-count": b"\x03#3100" + b"x" * 50,
}
for name, data in blocks.items():
    write("block_reader", name, data)

# --- form_file: JSON forms as cvnscope writes them, and damaged ones ---
form = {"format": "cvn73100-form", "version": 1,
        "order": ["Address", "TXDelay", "DTROnly", "SearchCriteria", "LearnStrings"],
        "properties": {"Address": "COM2::Baud=19200", "TXDelay": 50, "DTROnly": True,
                       "SearchCriteria": {"bytes": default_image().hex()},
                       "LearnStrings": [None, 1.5, 3000000000, [{"bytes": "00ff"}, "x"]]}}
write("form_file", "full", json.dumps(form, indent=2))
write("form_file", "no-order", json.dumps({"properties": {"b": 1, "a": "two"}}))
write("form_file", "odd-hex", json.dumps({"properties": {"k": {"bytes": "abc"}}}))
write("form_file", "deep", json.dumps({"properties": {"k": [[[[[[[[[[1]]]]]]]]]]}}))
write("form_file", "not-a-form", "[1, 2, 3]")
write("form_file", "order-duplicates", json.dumps({"order": ["a", "a", 3], "properties": {"a": False}}))

# --- sim_message: program messages, the last one ended by END ---
messages = [
    "*IDN?", "*RST;*CLS", "*ESR?;*STB?", "*ESE 32;*SRE 16", "*OPC?", ":SYST:ERR?",
    ":CHAN2:RANG 2.5;OFFS -0.1;:CHAN2:RANG?", ":TIM:RANG 1e-3;DEL 1e-4;REF LEFT", ":TRIG:SOUR DIG3;SLOP NEG",
    ":ACQ:TYPE AVER;COUN 16", ":WAV:SOUR POD1;FORM WORD;POIN 250;:WAV:PRE?", ":WAV:FORM ASC;POIN 100;:WAV:DATA?",
    ":DIG CHAN1,POD2", ":SYST:SET #14abcd", ":SYST:SET?", ":MEAS:VPP? CHAN3", ":A #H1F,'x''y',\"q\"",
    ":AUT;:RST?", ":CHAN1:OFFS 2mV;:TRIG:LEV -1E-3V", ":TIM:RANG #Q17;:CHAN3:DISP #B101", ":CHANnel5:RANG 1",
    "*LRN?\n*IDN?x", ":SYST:SET #0abc", ":MEAS:FREQ? CHAN4;PER?",
]
for i, text in enumerate(messages):
    write("sim_message", f"message-{i:02}", text)
