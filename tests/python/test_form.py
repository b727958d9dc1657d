"""The control's properties in the form file that cvnscope shares."""

import json
import os
import subprocess

import pytest

import cvn73100


def configure(control):
    control.address = "COM2::Baud=19200,Handshake=DTR_DSR"
    control.tx_delay = 20
    control.reset_on_initialize = True
    control.initial_search_mode = True
    io = control.io_configuration
    for address in cvn73100.GPIB_ADDRESSES:
        io.set_gpib_port_includes(0, address, address in (3, 7, 12))
    setup = control.setups.add("Saved")
    setup.comments = "from Python"
    control.setups.get_learn_string_on_add = False


def test_properties_round_trip_through_a_form_file(scope, tmp_path):
    configure(scope)
    taken = scope.setups.add("Taken")
    scope.address = "GPIB0::7::INSTR"
    taken.get_from_instrument()
    form = tmp_path / "form.json"
    assert scope.save_properties(form) == str(form)

    again = cvn73100.Scope(form=form)
    assert again.write_properties() == scope.write_properties()
    assert again.setups.names() == ["Saved", "Taken"]
    assert again.setups["Taken"].learn_string == taken.learn_string
    assert again.io_configuration.gpib_port_includes(0, 7) and not again.io_configuration.gpib_port_includes(0, 8)


def test_the_default_form_lives_in_the_users_config_folder(instrument):
    control = cvn73100.Scope()
    control.tx_delay = 35
    path = control.save_properties()
    assert path == cvn73100.default_form_path()
    assert path == os.path.join(os.environ["XDG_CONFIG_HOME"], "cvn73100", "form.json")
    fresh = cvn73100.Scope()
    fresh.load_properties()
    assert fresh.tx_delay == 35


@pytest.fixture
def cvnscope():
    """Runs cvnscope (the path in $CVNSCOPE) with --json and returns its JSON output."""
    program = os.environ.get("CVNSCOPE", "")
    if not program or not os.access(program, os.X_OK):
        pytest.skip("cvnscope is not built: $CVNSCOPE does not name the program")
    commands = subprocess.run([program, "--help"], capture_output=True, text=True, timeout=60).stdout
    if "config" not in commands or "setup" not in commands:
        pytest.skip("this cvnscope has no `config` and `setup` commands yet")

    def run(*arguments):
        result = subprocess.run([program, "--json", *arguments], capture_output=True, text=True, timeout=120)
        assert result.returncode == 0, result.stderr
        return json.loads(result.stdout)

    return run


def test_a_form_written_by_python_is_read_by_cvnscope_and_back(scope, tmp_path, cvnscope):
    configure(scope)
    form = str(tmp_path / "shared.json")
    scope.save_properties(form)

    shown = cvnscope("--form", form, "config", "show")
    assert shown["address"] == "COM2::Baud=19200,Handshake=DTR_DSR"
    assert (shown["txDelay"], shown["resetOnInitialize"], shown["initialSearch"]) == (20, True, True)
    assert shown["gpib"][0]["addresses"] == "3,7,12"
    listed = cvnscope("--form", form, "setup", "list")
    assert [entry["name"] for entry in listed["setups"]] == ["Saved"]

    cvnscope("--form", form, "config", "set", "--address", "GPIB0::12::INSTR", "--tx-delay", "40")
    back = cvn73100.Scope(form=form)
    assert (back.address, back.tx_delay, back.reset_on_initialize) == ("GPIB0::12::INSTR", 40, True)
    assert back.setups["Saved"].comments == "from Python"
    assert not back.io_configuration.gpib_port_includes(0, 8)
