# The Debian 12 packages of this project, the one list of them, and the one way to get what is missing.
# Read by ./run, ./test and .ci/run after scripts/common.sh.

# Compiler and tools.
packages_tools="g++ cmake ninja-build lld pkg-config ccache git python3"
# What the programs are made of; each is there for one job (docs/architecture.md says which).
packages_libraries="
  libfmt-dev libexpected-dev libsqlite3-dev libcli11-dev nlohmann-json3-dev libpugixml-dev libminizip-dev zlib1g-dev libdeflate-dev
  libavformat-dev libavcodec-dev libavutil-dev libswresample-dev libsoxr-dev libsoundtouch-dev
  libvorbis-dev libogg-dev libmp3lame-dev libshine-dev libtag1-dev
  librtmidi-dev librtaudio-dev libfluidsynth-dev timgm6mb-soundfont"
# The desktop; its base package also holds Qt Core, which everything uses.
packages_desktop="qt6-base-dev qt6-svg-dev libqt6svg6 libqt6svgwidgets6 fonts-liberation"
# The libraries of the tests and benchmarks, which every build is configured with.
packages_test_libraries="libgtest-dev libgmock-dev libbenchmark-dev"
# What the tests start.
packages_tests="xvfb xauth libxml2-utils"
# What only the checks of .ci/run need.
packages_checks="clang-14 libclang-rt-14-dev clang-format-14 clang-tidy-14 groff-base man-db"

packages_run="$packages_tools $packages_libraries $packages_desktop $packages_test_libraries"
packages_test="$packages_run $packages_tests"
packages_ci="$packages_test $packages_checks"

# missing_packages NAME...: those that are not installed, on one line.
missing_packages() {
  local name missing=""
  for name in "$@"; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null)" = installed ] || missing="$missing $name"
  done
  echo $missing
}

# install_packages NAME...: installs what is missing when that is allowed, says what to install when it is not.
# On a system without dpkg it leaves everything to the configuration that follows.
install_packages() {
  command -v dpkg-query >/dev/null 2>&1 || {
    say "Dies ist kein Debian-System. Gebraucht werden die Entsprechungen von: $*"
    return 0
  }
  local missing
  missing=$(missing_packages "$@")
  [ -n "$missing" ] || return 0

  local as_root=""
  if [ "$(id -u)" -ne 0 ]; then
    if command -v sudo >/dev/null 2>&1 && { [ -t 0 ] || sudo -n true 2>/dev/null; }; then
      as_root="sudo"
    else
      as_root="none"
    fi
  fi
  if [ "$as_root" != none ]; then
    say "Es fehlen Pakete, sie werden jetzt installiert: $missing"
    if $as_root apt-get update -q </dev/null &&
       $as_root env DEBIAN_FRONTEND=noninteractive \
         apt-get install -y -q --no-install-recommends $missing </dev/null; then
      return 0
    fi
    say "Die Installation ist fehlgeschlagen."
  fi
  say "Bitte installieren Sie diese Pakete als Administrator und rufen Sie den Befehl dann noch einmal auf:"
  say "  apt-get update && apt-get install --no-install-recommends $missing"
  return 1
}
