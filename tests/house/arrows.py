#!/usr/bin/env python3
"""The rules of the house that no compiler checks.

  arrows.py ROOT

Every source file is read once; each fault is one line on standard output. Status 0: none.
"""
import re
import subprocess
import sys
from pathlib import Path

# Room -> the rooms that it may include, itself included. modules is the table of filters, for both programs.
LOGIC = ["midi", "score", "audio", "search", "preview", "disc", "artworker", "converters"]
BASE = ["platform", "frame"]
ARROWS = {
    "platform": ["platform"],
    "frame": BASE,
    "midi": BASE + ["midi"],
    "score": BASE + ["score", "midi"],
    "audio": BASE + ["audio", "midi"],
    "search": BASE + ["search", "score", "midi", "converters"],
    "preview": BASE + ["preview", "search", "converters", "score", "midi"],
    "disc": BASE + ["disc", "audio", "midi"],
    "artworker": BASE + ["artworker"],
    "converters": BASE + ["converters", "midi", "score"],
    "modules": BASE + LOGIC + ["modules"],
    "batch": BASE + LOGIC + ["modules", "batch"],
    "app": BASE + LOGIC + ["modules", "app"],
}
# The same for the folders of the platform.
FLOORS = {
    "base": ["base"],
    "files": ["base", "files"],
    "store": ["base", "files", "store"],
    "programs": ["base", "programs"],
    "media": ["base", "files", "programs", "media"],
    "sound": ["base", "files", "programs", "media", "sound"],
    "disc": ["base", "files", "programs", "media", "disc"],
}

# Headers that any room may include. Those of Qt belong to platform (Core), artworker (Gui), and all windows.
ANYWHERE = {"tl/expected.hpp"}
WINDOW_CLASSES = re.compile(
    r"^(QtWidgets|QtPrintSupport|QtSvgWidgets|QApplication|QWidget|QDialog|QMainWindow|QMessageBox|QFileDialog|"
    r"QStyle\w*|QLayout|QGridLayout|Q\w*BoxLayout|QFormLayout|QSplitter|QLabel|Q\w*Button|QLineEdit|QComboBox|"
    r"QSpinBox|QSlider|QProgressBar|Q\w*View|QListWidget|QTreeWidget|QTableWidget|QTabWidget|QTabBar|QMenu\w*|"
    r"QToolBar|QStatusBar|QPrinter\w*|QPrintDialog|QGraphics\w+)(/|$)")
LIBRARY_OF = [
    (re.compile(r"^(Q[A-Z]|Qt)"), "Qt"),
    (re.compile(r"^fmt/"), "fmt"),
    (re.compile(r"^sqlite3"), "SQLite"),
    (re.compile(r"^CLI/"), "CLI11"),
    (re.compile(r"^nlohmann/"), "nlohmann-json"),
    (re.compile(r"^pugi"), "pugixml"),
    (re.compile(r"^(un)?zip\.h$|^ioapi\.h$"), "minizip"),
    (re.compile(r"^lib(av|sw)\w+/"), "FFmpeg"),
    (re.compile(r"^soxr"), "libsoxr"),
    (re.compile(r"^soundtouch/"), "SoundTouch"),
    (re.compile(r"^(vorbis|ogg)/"), "Vorbis"),
    (re.compile(r"^lame/"), "libmp3lame"),
    (re.compile(r"^shine/"), "libshine"),
    (re.compile(r"^taglib|^(fileref|tag|.*tag)\.h$"), "TagLib"),
    (re.compile(r"^(rtmidi/)?RtMidi"), "RtMidi"),
    (re.compile(r"^(rtaudio/)?RtAudio"), "RtAudio"),
    (re.compile(r"^fluidsynth"), "FluidSynth"),
    (re.compile(r"^scsi/"), "SG"),
]

# Put together here, so that this file does not find itself.
FORBIDDEN = re.compile(
    r"\b" + "speci" + r"fications?\b|" + r"\bspec" + r"\.md\b|\bPart" + r" \d+\.\d+\b", re.IGNORECASE)
TEXT_SUFFIXES = {".cpp", ".h", ".def", ".ui", ".py", ".md", ".txt", ".cmake", ".json", ".sh", ".svg", ".htm", ".html",
                 ".1", ".yml", ".yaml", ""}
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def is_window(path):
    return path[0] == "app" or "ui" in path[1:-1]


def check_include(path, quoted, header, libraries):
    """What is wrong with one include of a file below src/; libraries collects library -> rooms."""
    room = path[0]
    if quoted:
        target = header.split("/")[0]
        if target not in ARROWS:
            return None if target == "resources" or header.startswith("ui_") else f"includes unknown {header}"
        if "/ui/" in header and not is_window(path):
            return f"logic includes the window {header}"
        if room == target == "platform" and header.split("/")[1] not in FLOORS[path[1]]:
            return f"platform/{path[1]} may not use {header}"
        return None if target in ARROWS[room] else f"{room} may not use {target} ({header})"
    if header in ANYWHERE:
        return None
    if WINDOW_CLASSES.match(header) and not is_window(path):
        return f"logic includes Qt Widgets ({header})"
    for pattern, library in LIBRARY_OF:
        if pattern.match(header) and not (library == "Qt" and (is_window(path) or room == "artworker")):
            libraries.setdefault(library, {}).setdefault("/".join(path[:2]) if room == "platform" else room, header)
    return None


def circles_of(units):
    """The circles among units: unit -> the units that it includes. Each comes as a list of its units."""
    order, lowest, stack, found = {}, {}, [], []

    def visit(unit):
        order[unit] = lowest[unit] = len(order)
        stack.append(unit)
        for other in sorted(units.get(unit, ())):
            if other not in order:
                visit(other)
                lowest[unit] = min(lowest[unit], lowest[other])
            elif other in stack:
                lowest[unit] = min(lowest[unit], order[other])
        if lowest[unit] == order[unit]:
            circle = stack[stack.index(unit):]
            del stack[stack.index(unit):]
            if len(circle) > 1:
                found.append(sorted(circle))

    for unit in sorted(units):
        if unit not in order:
            visit(unit)
    return found


def faults_of(root, files):
    libraries = {}
    units = {}
    for name in files:
        path = Path(name)
        if path.suffix not in TEXT_SUFFIXES or name.startswith("tests/data/") or "/corpus/" in name:
            continue
        text = (root / path).read_text(encoding="utf-8", errors="replace")
        for match in FORBIDDEN.finditer(text):
            yield f"{name}:{text.count(chr(10), 0, match.start()) + 1}: mentions \"{match.group()}\""
        if path.parts[0] != "src" or path.suffix not in {".cpp", ".h"} or path.parts[1] not in ARROWS:
            continue
        for match in INCLUDE.finditer(text):
            fault = check_include(path.parts[1:], match.group(1) == '"', match.group(2), libraries)
            if fault:
                yield f"{name}:{text.count(chr(10), 0, match.start()) + 1}: {fault}"
            # A .cpp with its .h is one unit, and units of a room include one another one way.
            unit, other = str(path.relative_to("src").with_suffix("")), match.group(2).removesuffix(".h")
            room = path.parts[1]
            if other.startswith(f"{room}/") and other != unit:
                units.setdefault(unit, set()).add(other)
    for circle in circles_of(units):
        yield f"include one another in a circle: {', '.join(circle)}"
    for library, rooms in libraries.items():
        if len(rooms) > 1:
            yield f"{library} is included in more than one place: {', '.join(sorted(rooms))}"


def self_check():
    """The rules must find what they are for."""
    cases = [
        (("frame", "a.h"), True, "midi/x.h", True),
        (("midi", "a.h"), True, "frame/x.h", False),
        (("batch", "a.cpp"), True, "app/shell/main_window.h", True),
        (("batch", "a.cpp"), True, "modules/filter_modules.h", False),
        (("frame", "a.cpp"), True, "frame/ui/x.h", True),
        (("frame", "a.cpp"), False, "QPushButton", True),
        (("frame", "ui", "a.cpp"), False, "QPushButton", False),
        (("artworker", "a.cpp"), False, "QPainter", False),
    ]
    for path, quoted, header, wrong in cases:
        assert (check_include(path, quoted, header, {}) is not None) == wrong, (path, header)
    assert circles_of({"a": {"b"}, "b": {"c"}, "c": {"a", "d"}, "d": set(), "e": {"a"}}) == [["a", "b", "c"]]
    assert not circles_of({"a": {"b", "c"}, "b": {"c"}})
    assert FORBIDDEN.search("see Part" + " 1.2 of it") and not FORBIDDEN.search("a part of it")


def main():
    self_check()
    root = Path(sys.argv[1]).resolve()
    listed = subprocess.run(["git", "-C", root, "ls-files", "-co", "--exclude-standard"], capture_output=True, text=True)
    files = [name for name in listed.stdout.splitlines() if (root / name).is_file()]
    if listed.returncode != 0:  # a source archive
        files = [str(p.relative_to(root)) for p in root.rglob("*")
                 if p.is_file() and p.relative_to(root).parts[0] not in {"build", ".git"}]
    faults = list(faults_of(root, files))
    print("\n".join(faults) if faults else f"{len(files)} files keep the rules")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
