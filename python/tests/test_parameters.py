"""Parameters: values in and out, refusals, reports, files."""

import enum
import json
from collections.abc import Callable
from pathlib import Path
from typing import Any

import numpy as np
import pytest

import marovine
from marovine import parameters


def test_values_as_attributes_and_items(applet: marovine.Applet) -> None:
    applet.FG_WIDTH = 2048
    assert applet.FG_WIDTH == applet["fg_width"] == 2048
    applet["FG_LINEEXPOSURE"] = 20
    assert applet.FG_LINEEXPOSURE == 20.0
    applet.FG_WIDTH = np.uint16(1024)  # type: ignore[assignment]
    assert applet.FG_WIDTH == 1024
    assert "FG_WIDTH" in applet and "FG_WIDHT" not in applet and 7 not in applet
    assert {"FG_WIDTH", "acquire"} <= set(dir(applet)) and len(applet) == len(list(applet))
    applet.FG_LUT_CUSTOM_FILE = Path("/tmp/ä.lut")
    assert applet.FG_LUT_CUSTOM_FILE == "/tmp/ä.lut"


def test_enumerations_take_members_numbers_and_texts(applet: marovine.Applet) -> None:
    kind = parameters.FG_LUT_TYPE
    for given in (kind.LUT_TYPE_CUSTOM, int(kind.LUT_TYPE_CUSTOM), "LUT_TYPE_CUSTOM", "lut_type_custom"):
        applet.FG_LUT_TYPE = kind.LUT_TYPE_PROCESSING
        applet.FG_LUT_TYPE = given
        assert applet.FG_LUT_TYPE is kind.LUT_TYPE_CUSTOM
    assert kind("lut_type_custom") is kind(kind.LUT_TYPE_CUSTOM.title) is kind.LUT_TYPE_CUSTOM
    with pytest.raises(ValueError, match="'nonsense' is no entry; entries: .*LUT_TYPE_CUSTOM"):
        kind("nonsense")
    with pytest.raises(ValueError, match="nearest: LUT_TYPE_CUSTOM"):
        applet.FG_LUT_TYPE = "LUT_TYPE_COSTUM"
    # Every enumeration of the applet has its class, with the entries that the applet has.
    for parameter in applet.parameters.values():
        if parameter.kind == "enumeration":
            assert parameter.entries == list(getattr(parameters, parameter.name))
    assert issubclass(kind, enum.IntEnum)


@pytest.mark.parametrize(
    ("name", "value", "error"),
    [
        ("FG_WIDTH", "2048", TypeError),
        ("FG_WIDTH", 2048.0, TypeError),
        ("FG_WIDTH", float("nan"), TypeError),
        ("FG_WIDTH", None, TypeError),
        ("FG_WIDTH", np.array([1, 2]), TypeError),
        ("FG_WIDTH", -1, OverflowError),
        ("FG_WIDTH", 2**80, OverflowError),
        ("FG_WIDTH", 2**32 + 2048, OverflowError),
        ("FG_LINEEXPOSURE", "20", TypeError),
        ("FG_LINEEXPOSURE", 1j, TypeError),
        ("FG_LINEEXPOSURE", 10**400, OverflowError),
        ("FG_LINEEXPOSURE", float("nan"), marovine.Refused),
        ("FG_LINEEXPOSURE", float("inf"), marovine.Refused),
        ("FG_LUT_TYPE", 12345, marovine.Refused),
        ("FG_LUT_TYPE", [], TypeError),
        ("FG_LUT_TYPE", "\ud800", ValueError),
        ("FG_LUT_TYPE", "a\0b", ValueError),
        ("FG_LUT_CUSTOM_FILE", 3, TypeError),
        ("FG_LUT_CUSTOM_FILE", "a\0b", ValueError),
        ("FG_LUT_VALUE_RED", np.zeros(257, int), ValueError),
        ("FG_LUT_VALUE_RED", np.zeros((16, 16), int), ValueError),
        ("FG_LUT_VALUE_RED", np.zeros(256), TypeError),
        ("FG_LUT_VALUE_RED", np.full(256, -1), OverflowError),
        ("FG_LUT_VALUE_RED", [2**70] * 256, OverflowError),
        ("FG_LUT_VALUE_RED", [1] * 255 + [None], TypeError),
        ("FG_LUT_VALUE_RED", [[1], [1, 2]], ValueError),
        ("FG_LUT_VALUE_RED", np.array(5), TypeError),
        ("FG_LUT_VALUE_RED", [7, 8], ValueError),
        ("FG_LUT_VALUE_RED", np.full(256, 256), marovine.Refused),
        ("FG_LUT_VALUE_RED", [], ValueError),
        ("FG_LUT_VALUE_RED", "abc", TypeError),
        ("FG_LUT_VALUE_RED", 3, TypeError),
        ("FG_LUT_VALUE_RED", np.broadcast_to(np.uint8(1), 2**40), ValueError),
        ("FG_CAMSTATUS", 1, marovine.Refused),
    ],
)
def test_bad_values_leave_the_parameter(applet: marovine.Applet, name: str, value: Any, error: type[Exception]) -> None:
    before = applet[name]
    for put in (lambda: setattr(applet, name, value), lambda: applet.set({name: value})):
        with pytest.raises(error, match=name) as raised:
            put()
        assert str(raised.value)
    assert np.array_equal(applet[name], before)


def test_names_that_are_not_there(applet: marovine.Applet) -> None:
    for wrong in (AttributeError, KeyError, marovine.UnknownParameter):
        with pytest.raises(wrong, match="nearest: FG_WIDTH"):
            applet.FG_WIDHT = 2048
        with pytest.raises(wrong, match="nearest: FG_WIDTH"):
            applet["FG_WIDHT"]
    assert not hasattr(applet, "FG_WIDHT")
    assert "fg_width" in applet and "\ud800" not in applet
    wrongs: list[Any] = ["\ud800", "FG_WIDTH\0", 5]
    for name in wrongs:
        calls: list[Callable[[], object]] = [
            lambda: applet[name],  # noqa: B023
            lambda: applet.set({name: 2}),  # noqa: B023
            lambda: applet.parameters[name],  # noqa: B023
        ]
        for call in calls:
            with pytest.raises((KeyError, TypeError), match="no parameter is named .*\\\\|is a text, not int"):
                call()
    with pytest.raises(AttributeError):
        del applet.FG_WIDTH
    with pytest.raises(AttributeError, match="capital"):
        applet.fg_width = 3


def test_a_refusal_says_why(applet: marovine.Applet) -> None:
    applet.set(FG_XOFFSET=12288)
    with pytest.raises(marovine.Refused) as raised:
        applet.FG_WIDTH = 4104
    why = raised.value
    assert (why.code, why.parameter, why.value, why.rule) == (-6000, "FG_WIDTH", 4104, "above 4096")
    assert why.nearest == [4096]
    assert why.cause is not None and (why.cause.parameter, why.cause.remedies) == ("FG_XOFFSET", ("12280",))
    assert why.remedies == ["set FG_XOFFSET to 12280 or less"]
    assert "because FG_XOFFSET is 12288" in str(why)
    assert "not above 4096, because FG_XOFFSET is 12288" in applet.parameters.FG_WIDTH.limits
    with marovine.Applet(explain=False) as quick:
        quick.FG_XOFFSET = 12288
        with pytest.raises(marovine.Refused, match="-6000"):
            quick.FG_WIDTH = 4104
        assert "FG_WIDTH = " in repr(quick.parameters.FG_WIDTH)
        with pytest.raises(marovine.Error, match="explain=False"):
            quick.check("x.mcf")


def test_many_sets_do_not_burden_a_refusal(applet: marovine.Applet) -> None:
    applet.FG_XOFFSET = 12288
    for i in range(40_000):
        applet.FG_LINE_DOWNSCALE = i % 100 + 1
        applet.FG_HEIGHT = i % 100 * 2 + 4
    with pytest.raises(marovine.Refused, match="because FG_XOFFSET is 12288"):
        applet.FG_WIDTH = 4104


def test_several_at_once(applet: marovine.Applet) -> None:
    report = applet.set({"FG_XOFFSET": 12288}, FG_HEIGHT=128)
    assert report.set == (("FG_XOFFSET", 0, 12288), ("FG_HEIGHT", 64, 128))
    assert ("FG_WIDTH", "maximum", "16384", "4096", "pixel") in report.moved
    assert any(write.name.endswith("YLength") and write.value == 128 for write in report.writes)
    assert "maximum" in str(report) and "<td>FG_WIDTH</td>" in report._repr_html_()
    with pytest.raises(TypeError):  # read before anything is set
        applet.set(FG_HEIGHT=256, FG_WIDTH="wide")
    assert applet.FG_HEIGHT == 128
    with pytest.raises(marovine.Refused) as raised:
        applet.set(FG_HEIGHT=256, FG_WIDTH=1001)
    assert raised.value.report is not None and raised.value.report.set == (("FG_HEIGHT", 128, 256),)
    assert applet.FG_HEIGHT == 256


def test_tables(applet: marovine.Applet) -> None:
    applet.FG_LUT_TYPE = "LUT_TYPE_CUSTOM"
    falling = np.arange(512)[::-2]  # neither contiguous nor of the table's own type
    applet.FG_LUT_VALUE_GREEN = falling // 2
    assert np.array_equal(applet.FG_LUT_VALUE_GREEN, np.arange(256)[::-1])
    applet.set_elements("FG_LUT_VALUE_GREEN", 254, [7, 8])
    curves = applet.curves()
    assert curves.green[-2:].tolist() == [7, 8] and curves.level[-1] == 255
    with pytest.raises(marovine.Refused):
        applet.set_elements("FG_LUT_VALUE_GREEN", 255, [1, 2])
    with pytest.raises(ValueError, match="first must be 0 to"):
        applet.set_elements("FG_LUT_VALUE_GREEN", -1, [1])
    with pytest.raises(TypeError):
        applet.set_elements("FG_WIDTH", 0, [1])


def test_what_a_parameter_tells(applet: marovine.Applet) -> None:
    exposure = applet.parameters["fg_lineexposure"]
    assert (exposure.unit, exposure.minimum, exposure.maximum, exposure.step) == ("µs", 0.512, 200.0, 0.008)
    assert exposure.title and exposure.group and exposure.description and exposure.writable
    assert exposure.drives == ["Device1_Process0_Trigger_Trigger_ExsyncExposure"]
    assert repr(exposure).startswith("<FG_LINEEXPOSURE = 19.0 µs; accepts 0.512 to 200, step 0.008")
    assert "because FG_LINETRIGGERMODE is GRABBER_CONTROLLED" in exposure._repr_html_()
    tree = applet.parameters
    assert len(tree) == len(list(tree)) == len(applet.names())
    shown = tree._repr_html_()
    assert all(name in shown for name in tree)
    assert repr(tree.FG_CAMSTATUS).endswith("read-only>")


def test_files(applet: marovine.Applet, tmp_path: Path) -> None:
    file = tmp_path / "a.mcf"
    applet.FG_WIDTH = 512
    applet.save(file)
    applet.FG_WIDTH = 1024
    assert applet.diff(file) == [("FG_WIDTH", 512, 1024)]
    assert applet.check(file) == [] == applet.load(file)
    assert applet.FG_WIDTH == 512 and applet.diff(file) == []

    (tmp_path / "b.mcf").write_text(file.read_text("latin-1").replace("FG_WIDTH=512;", "FG_WIDTH=513;"), "latin-1")
    finding = applet.check(tmp_path / "b.mcf")[0]
    assert finding.weight == "skipped" and "FG_WIDTH = 513 refused" in finding.text
    assert "not a multiple of 8" in applet.load(tmp_path / "b.mcf")[0].sentence
    assert applet.diff(file, tmp_path / "b.mcf") == [("FG_WIDTH", 512, 513)]

    applet.FG_LUT_TYPE = "LUT_TYPE_CUSTOM"
    applet.FG_LUT_VALUE_RED = np.zeros(256, np.uint8)
    with pytest.warns(UserWarning, match="no place for the elements of FG_LUT_VALUE_RED"):
        applet.save(file)
    for call in (applet.save, applet.load, applet.check, applet.diff):
        with pytest.raises(ValueError, match="zero byte"):
            call("a\0.mcf")
    for call in (applet.load, applet.diff):
        with pytest.raises(marovine.Error, match="no file"):
            call(tmp_path / "missing.mcf")
    assert applet.check(tmp_path / "missing.mcf")[0].weight == "load fails"
    with pytest.raises(marovine.Refused):
        applet.save(tmp_path / "no folder" / "a.mcf")


def test_what_the_library_tells(applet: marovine.Applet) -> None:
    info = applet.info()
    assert info["name"] == "Marovine" and info["icon"].startswith(b"\x89PNG") and info["parameters"] == len(applet)
    assert json.dumps(info["capabilities"])
    assert "FG_WIDTH" in applet.xml()
    assert all(mask.bit_count() == 1 for mask in applet.event_masks.values())
