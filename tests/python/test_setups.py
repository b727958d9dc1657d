"""Set-ups from Python: the collection as a sequence, and set-ups through files and back to the instrument."""

import pytest

import cvn73100
from cvn73100 import ScopeError, ScopeIndexError, ScopeKeyError
from conftest import INVALID_PROPERTY_VALUE, OBJECT_ERROR_BASE

DUPLICATE_KEY = 457
SETUP_NOT_SENDABLE = OBJECT_ERROR_BASE + 17
NOT_A_SETUP_FILE = OBJECT_ERROR_BASE + 321


def test_setups_are_a_sequence_counted_from_zero_and_keyed_by_name():
    setups = cvn73100.Setups()
    for name in ("Alpha", "Beta", "Gamma"):
        setups.add(name)

    assert len(setups) == 3 and setups.names() == ["Alpha", "Beta", "Gamma"]
    assert [s.name for s in setups] == ["Alpha", "Beta", "Gamma"]
    assert setups[0].name == "Alpha" and setups[-1].name == "Gamma"
    assert setups["beta"] == setups[1] and setups.item(2) == setups[1] and setups.item("GAMMA") == setups[2]
    assert [s.name for s in setups[1:]] == ["Beta", "Gamma"]
    assert "ALPHA" in setups and "Delta" not in setups and setups[0] in setups

    with pytest.raises(ScopeIndexError) as info:
        setups[3]
    assert isinstance(info.value, IndexError) and info.value.number == 9
    with pytest.raises(ScopeIndexError):
        setups.item(0)
    with pytest.raises(ScopeKeyError) as info:
        setups["Delta"]
    assert isinstance(info.value, KeyError) and info.value.number == 5

    del setups[0]
    setups.remove("gamma")
    assert setups.names() == ["Beta"]


def test_adding_and_renaming_refuse_what_the_collection_refuses():
    setups = cvn73100.Setups()
    first = setups.add("One")
    with pytest.raises(ScopeError) as info:
        setups.add("ONE")
    assert info.value.number == DUPLICATE_KEY
    for bad in ("", "two words", "a|b"):
        with pytest.raises(ScopeError) as info:
            setups.add(bad)
        assert info.value.number == INVALID_PROPERTY_VALUE
    assert setups.names() == ["One"]

    with pytest.raises(ScopeError):
        first.name = "has space"
    first.name = "Renamed"
    first.comments = "  bench 4  "
    assert (first.name, first.comments) == ("Renamed", "bench 4")
    # Renaming keeps the key the set-up was added under.
    assert setups["One"] == first


def test_a_setup_round_trips_through_a_file_and_back_to_the_instrument(scope, tmp_path):
    scope.analog_channels[1].range = 2.0
    scope.timebase.range = 5e-4
    taken = scope.setups.add("Bench")
    taken.comments = "two volts"
    taken.get_from_instrument()
    assert taken.learn_string and (taken.model, taken.version) == ("73135D", "A.02.10")
    assert scope.setups.last_instrument_setup == "Bench"

    path = tmp_path / "bench.scp"
    taken.save_to_file(path)
    loaded = cvn73100.Setup()
    loaded.read_from_file(str(path))
    assert (loaded.learn_string, loaded.model, loaded.version, loaded.comments) == (
        taken.learn_string,
        "73135D",
        "A.02.10",
        "two volts",
    )

    scope.utilities.reset_instrument()
    assert scope.analog_channels[1].range == 8.0
    restored = scope.setups.add("Restored")
    restored.copy_from(loaded)
    restored.send_to_instrument()
    assert scope.analog_channels[1].range == 2.0 and scope.timebase.range == 5e-4


def test_setups_that_cannot_be_sent_or_read_raise_and_change_nothing(scope, tmp_path):
    empty = scope.setups.add("Empty")
    with pytest.raises(ScopeError) as info:
        empty.send_to_instrument()
    assert info.value.number == SETUP_NOT_SENDABLE and info.value.description == "The setup data for the instrument is empty."

    other = tmp_path / "notes.scp"
    other.write_text("not a setup\n")
    with pytest.raises(ScopeError) as info:
        empty.read_from_file(other)
    assert info.value.number == NOT_A_SETUP_FILE
    assert empty.learn_string is None and empty.model == ""
