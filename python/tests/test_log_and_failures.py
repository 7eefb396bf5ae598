"""Logging through the package, and the version of the library it drives."""
import pytest

import ovosystem


def test_the_daily_file_takes_messages_of_the_levels_let_through(tmp_path):
    ovosystem.setup_logging(console=True, directory=tmp_path, suffix="levels", level=0)
    log = ovosystem.Logger("pytest.levels")
    log.info("shown")
    log.trace("hidden at level 0")
    log.set_level(1)
    log.trace_bytes("->", b"\x00\xa4")
    log.info_dump("dump", b"AB")
    lines = next(tmp_path.glob("*-levels.log")).read_text().splitlines()
    assert [line[13:] for line in lines[:3]] == ["[pytest.levels   ] shown", "[pytest.levels   ] -> 00 A4 ",
                                                 "[pytest.levels   ] dump"]
    assert lines[3].startswith(" " * 32 + "41 42 ") and lines[3].split()[2:] == ["|", "AB"] and len(lines) == 4


def test_logging_refuses_what_would_be_lost(tmp_path):
    with pytest.raises(ovosystem.ArgumentError, match="cannot log into '.*missing': no such directory"):
        ovosystem.setup_logging(directory=tmp_path / "missing")
    with pytest.raises(ovosystem.ArgumentError, match="invalid string position"):
        ovosystem.Logger("pytest.dump").info_dump("nothing", b"")


def test_the_package_drives_the_library_of_its_own_version():
    assert ovosystem.library_version() == ovosystem.__version__
