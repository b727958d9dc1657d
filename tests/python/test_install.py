"""`pip install .` builds the package into a clean virtual environment, where it works outside the build tree."""

import os
import pathlib
import subprocess
import sys

import pytest

from cvn73100 import sim

ROOT = pathlib.Path(__file__).resolve().parents[2]
SCRIPT = "import cvn73100; s = cvn73100.Scope(); print(cvn73100.__file__, s.query('*IDN?'), s.waveform()[1].size, sep='|')"


@pytest.mark.skipif("CVN73100_BUILD_DIR" not in os.environ, reason="builds the module: needs a configured build")
def test_pip_install_gives_a_working_package(tmp_path):
    venv = tmp_path / "venv"
    subprocess.run([sys.executable, "-m", "venv", "--system-site-packages", "--without-pip", venv], check=True)
    python = str(venv / "bin" / "python")
    outside = {key: value for key, value in os.environ.items() if key != "PYTHONPATH"}
    # The build tools run as they are; only the module's own interpreter needs the test's preloads.
    tools = {key: value for key, value in outside.items() if key != "LD_PRELOAD"}
    pip = [python, "-m", "pip", "install", "-q", "--no-build-isolation", "--no-index", "--no-deps", str(ROOT)]
    subprocess.run(pip, check=True, env=tools, timeout=300)

    run = subprocess.run([python, "-c", SCRIPT], cwd=tmp_path, env=outside, capture_output=True, text=True, timeout=60)
    assert run.returncode == 0, run.stderr
    where, identity, points = run.stdout.strip().split("|")
    assert where.startswith(str(venv)) and identity == sim.bus_instrument(7).idn and points == "1000"
