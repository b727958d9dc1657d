"""An independent client, PyVISA with its pure-Python backend, reads the simulator on its pseudo-terminal (an
ASRL resource) and on its raw SCPI socket (a SOCKET resource) and checks what it gets against what the
instrument holds: the identity it was given, the set-up it was told, and the signal formula.

The simulator program comes from the CVN73100_SIM environment variable."""

import math
import os
import struct
import subprocess
import zlib

import pytest
import pyvisa

IDENTITY = "PyVISA Check Inc.,73137D,PV0001,C.03.00"


@pytest.fixture(scope="module")
def simulator():
    program = os.environ.get("CVN73100_SIM")
    if not program:
        pytest.fail("set CVN73100_SIM to the cvn73100-sim program")
    process = subprocess.Popen(
        [program, "--pty", "--tcp", "127.0.0.1:0", "--idn", IDENTITY],
        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    pty = process.stdout.readline().strip()
    port = process.stdout.readline().strip().split(":")[1]
    yield {"asrl": f"ASRL{pty}::INSTR", "socket": f"TCPIP::127.0.0.1::{port}::SOCKET"}
    process.terminate()
    assert process.wait(timeout=10) == 0, "the simulator must stop cleanly on SIGTERM"


@pytest.fixture(scope="module")
def resources(simulator):
    manager = pyvisa.ResourceManager("@py")
    opened = {}
    for kind, name in simulator.items():
        resource = manager.open_resource(name, read_termination="\n", write_termination="\n", timeout=5000)
        opened[kind] = resource
    yield opened
    for resource in opened.values():
        resource.close()
    manager.close()


KINDS = ["asrl", "socket"]


@pytest.mark.parametrize("kind", KINDS)
def test_identity(resources, kind):
    assert resources[kind].query("*IDN?") == IDENTITY


def read_setup(resource):
    return resource.query_binary_values(":SYSTem:SETup?", datatype="B", container=bytes)


@pytest.mark.parametrize("kind", KINDS)
def test_setup_block_holds_the_settings_and_restores_them(resources, kind):
    resource = resources[kind]
    resource.write("*RST;:ACQuire:TYPE AVERage;COUNt 64;:CHANnel3:PROBe 10;:TRIGger:SOURce DIGital3")
    setup = read_setup(resource)
    # Magic, version, declared payload length, and a standard CRC-32 over everything before it.
    assert setup[:4] == b"CVLS" and setup[4] == 1
    assert struct.unpack(">H", setup[6:8])[0] == len(setup) - 12
    assert struct.unpack(">I", setup[-4:])[0] == zlib.crc32(setup[:-4])
    # The first two settings are the acquisition type and count, 32-bit big-endian.
    assert struct.unpack(">ii", setup[8:16]) == (1, 64)
    # The set-up contains LF and CR bytes, so the binary-block reader must not stop at the terminator.
    assert b"\n" in setup

    resource.write("*RST")
    assert read_setup(resource) != setup
    resource.write_binary_values(":SYSTem:SETup ", setup, datatype="B")
    assert read_setup(resource) == setup
    assert resource.query(":ACQ:TYPE?;COUN?;:CHAN3:PROB?;:TRIG:SOUR?") == "AVER;64;10;DIG3"
    assert resource.query(":SYSTem:ERRor?") == '0,"No error"'


# Enumerated settings take character data in either form and any case, answer the short form, and refuse a
# number (-104) or an unknown word (-224) without changing.
@pytest.mark.parametrize("kind", KINDS)
@pytest.mark.parametrize("header,sent,answer", [
    (":ACQuire:TYPE", "hres", "HRES"), (":CHANnel2:COUPling", "GND", "GND"), (":TIMebase:MODE", "WINDow", "WIND"),
    (":TIMebase:REFerence", "right", "RIGH"), (":TRIGger:SWEep", "NORMal", "NORM"),
    (":TRIGger:SOURce", "EXTernal", "EXT"), (":TRIGger:SLOPe", "NEG", "NEG"), (":TRIGger:COUPling", "ac", "AC")])
def test_mnemonic_settings(resources, kind, header, sent, answer):
    resource = resources[kind]
    resource.write(f"*RST;*CLS;{header} {sent}")
    assert resource.query(f"{header}?") == answer
    resource.write(f"{header} 2;{header} BOGUS")
    assert resource.query(f"{header}?;:SYSTem:ERRor?;:SYSTem:ERRor?") == \
        f'{answer};-104,"Data type error";-224,"Illegal parameter value"'


def test_both_transports_encode_settings_alike(resources):
    for resource in resources.values():
        resource.write("*RST;:CHANnel1:RANGe 2.5;:TIMebase:DELay 1E-4")
    assert read_setup(resources["asrl"]) == read_setup(resources["socket"])


def preamble(resource):
    fields = resource.query(":WAVeform:PREamble?").split(",")
    assert len(fields) == 10
    return [int(f) for f in fields[:4]] + [float(f) for f in fields[4:]]


@pytest.mark.parametrize("kind", KINDS)
@pytest.mark.parametrize("form,datatype", [("BYTE", "B"), ("WORD", "H")])
def test_waveform_matches_the_formula(resources, kind, form, datatype):
    resource = resources[kind]
    resource.write(f"*RST;:CHANnel1:RANGe 2.5;:WAVeform:SOURce CHANnel1;FORMat {form};POINts 500")
    fmt, _, points, _, xinc, xorig, xref, yinc, yorig, yref = preamble(resource)
    assert fmt == (0 if form == "BYTE" else 1) and points == 500
    codes = resource.query_binary_values(":WAVeform:DATA?", datatype=datatype, is_big_endian=True)
    assert len(codes) == points
    top = 255 if form == "BYTE" else 65535
    for i, code in enumerate(codes):
        t = xorig + (i - xref) * xinc
        volts = math.sin(2 * math.pi * 1000.0 * t)  # channel 1: 1 kHz, 1 V peak
        expected = min(max(round((volts - yorig) / yinc + yref), 0), top)
        assert abs(code - expected) <= 1, f"sample {i}"
