"""The control from Python: connection, waveforms against the simulator's formula, sub-objects, images, errors and
support messages."""

import pickle
import sys

import numpy as np
import pytest

import cvn73100
from cvn73100 import (
    AcquisitionType,
    ImageFormat,
    OnOffState,
    ProbeCoupling,
    ScopeError,
    SupportMessageMode,
    TimeReference,
    TriggerSlope,
    TriggerSource,
    sim,
)
from conftest import INVALID_PROPERTY_VALUE

# Where the first sample lies, as a fraction of the time range before the delay.
REFERENCE_FRACTION = {TimeReference.CENTER: 0.5, TimeReference.LEFT: 0.0, TimeReference.RIGHT: 1.0}


@pytest.mark.parametrize(
    "channel, volts_range, offset, time_range, delay, reference",
    [
        (1, 8.0, 0.0, 1e-3, 0.0, TimeReference.CENTER),
        (1, 2.5, 0.2, 2e-3, 1e-4, TimeReference.LEFT),
        # A window of the ramp without its jump.
        (3, 4.0, -0.25, 2e-4, 5e-4, TimeReference.RIGHT),
    ],
)
def test_waveform_matches_the_signal_formula(scope, channel, volts_range, offset, time_range, delay, reference):
    settings = scope.analog_channels[channel]
    settings.display = OnOffState.ON
    settings.range = volts_range
    settings.offset = offset
    scope.timebase.range = time_range
    scope.timebase.delay = delay
    scope.timebase.reference = reference

    times, volts = scope.waveform(channel, 500)

    assert times.dtype == np.float64 and volts.dtype == np.float64
    assert times.shape == volts.shape == (500,)
    start = delay - REFERENCE_FRACTION[reference] * time_range
    np.testing.assert_allclose(times, start + np.arange(500) * time_range / 500, rtol=0, atol=time_range * 1e-9)
    # Within the smallest step of the instrument's 8-bit codes over the screen height.
    np.testing.assert_allclose(volts, sim.signal_volts(channel, times), rtol=0, atol=volts_range / 256)


def test_all_channels_and_the_logic_bits_come_in_channel_order(scope):
    for channel in range(1, 5):
        scope.analog_channels[channel].display = OnOffState.ON
    records = scope.waveforms(100)
    assert len(records) == 4
    for channel, (times, volts) in enumerate(records[:3], start=1):
        np.testing.assert_allclose(volts, sim.signal_volts(channel, times), rtol=0, atol=8.0 / 256)

    times, bits = scope.logic_data(250)
    assert bits.dtype == np.int32 and bits.shape == times.shape == (250,)
    np.testing.assert_array_equal(bits, sim.logic_word(times))


def test_settings_go_in_as_ints_and_come_back_as_enumerations(scope):
    scope.acquisition.type = AcquisitionType.AVERAGE
    scope.acquisition.count = 16
    scope.trigger.source = 2
    scope.trigger.slope = TriggerSlope.NEGATIVE
    scope.trigger.level = 0.25
    scope.analog_channels[2].coupling = ProbeCoupling.AC
    scope.analog_channels[2].probe_attenuation = 10
    scope.logic_channel[15].display = OnOffState.ON
    scope.analog_channels[3].display = True

    assert scope.acquisition.type is AcquisitionType.AVERAGE
    assert scope.acquisition.count == 16
    assert scope.trigger.source is TriggerSource.CHANNEL2
    assert scope.trigger.slope is TriggerSlope.NEGATIVE
    assert scope.analog_channels[2].coupling is ProbeCoupling.AC
    assert scope.analog_channels[2].probe_attenuation == 10
    assert scope.logic_channel[15].display is OnOffState.ON
    assert scope.analog_channels[3].display is OnOffState.ON
    # The instrument itself holds them.
    assert float(scope.query(":TRIGger:LEVel?")) == 0.25
    assert int(float(scope.query(":ACQuire:COUNt?"))) == 16


def test_channel_families_are_indexed_by_the_instruments_numbers(scope):
    assert [c.number for c in scope.analog_channels] == [1, 2, 3, 4]
    assert len(scope.logic_channel) == 16 and scope.logic_channel[0].number == 0
    assert [t.number for t in scope.trace] == [1, 2, 3, 4] + list(range(10, 26))
    for family, outside in ((scope.analog_channels, 0), (scope.logic_channel, 16), (scope.trace, 5)):
        with pytest.raises(cvn73100.ScopeIndexError) as info:
            family[outside]
        assert isinstance(info.value, IndexError) and info.value.number == 9


@pytest.mark.parametrize(
    "image_format, mime_type, magic",
    [
        (ImageFormat.BMP, "image/bmp", (b"BM",)),
        (ImageFormat.GIF, "image/gif", (b"GIF87a", b"GIF89a")),
        (ImageFormat.TIF, "image/tiff", (b"II*\x00", b"MM\x00*")),
        (ImageFormat.JPG, "image/jpeg", (b"\xff\xd8\xff",)),
    ],
)
def test_screen_image_is_the_encoded_file(scope, tmp_path, image_format, mime_type, magic):
    image = scope.screen_image(image_format)
    assert isinstance(image.data, bytes) and image.data.startswith(magic)
    assert (image.format, image.mime_type, image.width, image.height) == (image_format, mime_type, 640, 480)

    path = tmp_path / "screen"
    scope.save_screen_image(path, image_format)
    assert path.read_bytes().startswith(magic)


def test_an_invalid_address_raises_scope_error_and_changes_nothing(scope):
    with pytest.raises(ScopeError) as info:
        scope.address = "GPIB9::99::INSTR"
    error = info.value
    assert (error.number, error.source, error.description, error.help_file) == (
        INVALID_PROPERTY_VALUE,
        "QD 73100 Scope Control",
        "Invalid property value.",
        "Cvn73100.hlp",
    )
    assert str(error) == "-2147221124: QD 73100 Scope Control: Invalid property value."
    assert scope.address == "GPIB0::7::INSTR" and scope.instrument_connected
    copy = pickle.loads(pickle.dumps(error))
    assert (type(copy), copy.number, copy.description) == (cvn73100.ScopeValueError, error.number, error.description)


def test_support_messages_reach_the_callback_and_the_message_box(scope):
    messages, boxes = [], []
    scope.support_message_mode = SupportMessageMode.EVENT | SupportMessageMode.MESSAGE_BOX
    assert scope.support_message_mode == SupportMessageMode.EVENT | SupportMessageMode.MESSAGE_BOX
    cvn73100.set_message_box_handler(lambda title, prompt, style: boxes.append((title, prompt)))
    try:
        connection = scope.connect_support_message(messages.append)
        with pytest.raises(ScopeError):
            scope.address = "COM9"
        assert messages and all("CIOConfiguration" in text for text in messages)
        assert [prompt for _, prompt in boxes] == messages
        assert {title for title, _ in boxes} == {"Remote Support Assistant"}

        connection.disconnect()
        messages.clear()
        with pytest.raises(ScopeError):
            scope.address = "COM9"
        assert messages == []
    finally:
        cvn73100.set_message_box_handler(None)


def test_a_failing_callback_is_reported_and_the_control_goes_on(scope, monkeypatch):
    unraisable = []
    monkeypatch.setattr(sys, "unraisablehook", unraisable.append)
    scope.support_message_mode = SupportMessageMode.EVENT
    scope.connect_support_message(lambda text: 1 / 0)
    with pytest.raises(ScopeError) as info:
        scope.address = "COM9"
    assert info.value.number == INVALID_PROPERTY_VALUE
    assert unraisable and unraisable[0].exc_type is ZeroDivisionError


def test_the_controls_io_configuration_is_live(scope):
    io = scope.io_configuration
    io.active_address_string = "gpib0::12::instr"
    assert scope.address == "GPIB0::12::INSTR"
    # The connection followed the address.
    assert "44210A" in scope.query("*IDN?")


def test_an_io_configuration_of_its_own_is_copied_in(scope):
    own = cvn73100.IOConfiguration()
    own.active_address_string = "GPIB0::3::INSTR"
    own.set_baud_rate(2, 19200)
    assert scope.address == "GPIB0::7::INSTR"

    scope.io_configuration = own
    assert scope.address == "GPIB0::3::INSTR" and scope.io_configuration.baud_rate(2) == 19200
    assert scope.search_criteria == own.data
    own.set_baud_rate(2, 2400)
    assert scope.io_configuration.baud_rate(2) == 19200

    with pytest.raises(cvn73100.ScopeIndexError):
        own.baud_rate(7)
    with pytest.raises(ScopeError) as info:
        own.active_port_gpib_address = 31
    assert info.value.number == INVALID_PROPERTY_VALUE and own.active_port_gpib_address == 3
