"""The example script runs against the simulated instrument, with and without matplotlib."""

import os
import pathlib
import subprocess
import sys

import pytest

EXAMPLE = pathlib.Path(__file__).resolve().parents[2] / "examples" / "waveform_plot.py"


def run_example(*arguments, block_matplotlib=False):
    # Importing a module mapped to None raises ImportError, as when it is not installed.
    prelude = "import sys; sys.modules['matplotlib'] = None; " if block_matplotlib else ""
    code = prelude + f"import runpy, sys; sys.argv = {[str(EXAMPLE), *arguments]!r}; runpy.run_path(sys.argv[0], run_name='__main__')"
    return subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=120, env=os.environ)


def test_the_example_plots_the_waveform(tmp_path):
    pytest.importorskip("matplotlib")
    output = tmp_path / "waveform.png"
    result = run_example("--channel", "2", "--points", "500", "--output", str(output))
    assert result.returncode == 0, result.stderr
    assert output.read_bytes().startswith(b"\x89PNG")


def test_without_matplotlib_the_example_prints_the_samples():
    result = run_example("--points", "100", block_matplotlib=True)
    assert result.returncode == 0, result.stderr
    assert result.stdout.startswith("Corvane Technologies,73135D,QX40001234,A.02.10: 100 points")


def test_the_example_reports_a_bad_address():
    result = run_example("--address", "GPIB0::99::INSTR")
    assert result.returncode == 1 and "-2147221124" in result.stderr
