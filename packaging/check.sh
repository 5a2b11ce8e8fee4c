#!/usr/bin/env bash
# The form of the code: layout, layers, length of files, static checks. Prints what is wrong and exits 1.
set -uo pipefail
cd "$(dirname "$0")/.."
bad=0
wrong() {
  printf '\ncheck: %s\n' "$1"
  printf '%s\n' "$2" | head -n 20
  bad=1
}
ask() { # ask WHAT COMMAND...: the command's output names what is wrong
  local what=$1 found
  shift
  found=$("$@" 2>&1) || true
  [ -z "$found" ] || wrong "$what" "$found"
}

mapfile -t sources < <(git ls-files -co --exclude-standard 'source/*' 'tests/*' 'simulator/*' 'bench/*' | grep -E '\.(h|cpp)$')

layout() { clang-format --dry-run --Werror "${sources[@]}" 2>&1 | grep -E 'error' | cut -d: -f1,2; }
too_long() { wc -l "${sources[@]}" | awk '$2 != "total" && $1 > 400 { print $1, $2 }'; }
platform_reaches_up() { grep -nE '#include "(controls|server|config|feed|shell|carts|audio|browser)/' source/platform/*; }
platform_uses_widgets() { grep -nE '#include <(QWidget|QApplication|QMessageBox|QMainWindow|QDialog|QLabel)>' source/platform/*; }
controls_reach_up() { grep -nE '#include "(config|feed|shell|carts|audio|browser)/' source/controls/*; }
modules_include_windows() {
  grep -rnE '#include "([a-z]+/frm|config/ServerConfig|controls/)' source/server | grep -vE '/(frm[A-Za-z]*|ServerConfig|main)\.(h|cpp):'
}
windows_include_upward() {
  grep -nE '#include "(shell|config)/frm' source/server/{feed,carts,browser}/* 2>/dev/null
  grep -nE '#include "shell/frm' source/server/config/* 2>/dev/null
}
posix_outside_platform() { grep -rnE '#include <(unistd|fcntl|termios|spawn|pulse/[a-z]+|sys/[a-z]+)\.h>' source/server source/controls; }
sleeps() { grep -rnE 'sleep_for|usleep|QThread::m?sleep|qWait\(' tests | grep -v '^tests/station/'; }
tests_that_prove_nothing() { grep -rnE 'GTEST_SKIP|DISABLED_|EXPECT_TRUE\(true\)|SUCCEED\(\)' tests; }
python_that_does_not_parse() { git ls-files -co --exclude-standard '*.py' | xargs -r python3 -m py_compile; }
oddities_without_test() {
  grep -oE '`[A-Z][A-Za-z]+\.[A-Za-z0-9]+`' docs/kept-oddities.md | tr -d '`' | while IFS=. read -r suite name; do
    grep -rqE "TEST(_F|_P)?\($suite, $name\)" tests || echo "$suite.$name"
  done
}
static_checks() {
  cppcheck --quiet --std=c++20 --language=c++ --enable=warning,performance,portability --inline-suppr \
    --suppress=missingIncludeSystem --suppress=internalAstError -j "$(nproc)" -I source -I source/server \
    --template='{file}:{line}: {id}: {message}' source simulator
}

# One file at a time; a file that was found clean isn't looked at again until it, a header or the list of checks changes.
tidy_file() {
  local clean
  clean=build/tidy/$( (echo "$headers"; cat "$1") | sha256sum | cut -d' ' -f1)
  [ ! -e "$clean" ] || return 0
  if clang-tidy-14 --quiet -p build/dev "$1" 2>/dev/null >"$clean.found"; then
    mv "$clean.found" "$clean"
  else
    cat "$clean.found"
    rm -f "$clean.found"
  fi
}
tidy() {
  mkdir -p build/tidy
  [ -e build/dev/compile_commands.json ] || cmake --preset dev >/dev/null || return
  headers=$(git ls-files -co --exclude-standard .clang-tidy CMakeLists.txt CMakePresets.json 'source/*.h' | xargs cat | sha256sum)
  export headers
  export -f tidy_file
  git ls-files -co --exclude-standard 'source/*.cpp' | xargs -P "$(nproc)" -I {} bash -c 'tidy_file {}'
}

ask "not laid out by clang-format (clang-format -i FILE)" layout
ask "longer than 400 lines (what is the second subject in it?)" too_long
ask "the platform layer must not know the server" platform_reaches_up
ask "the platform layer links no widgets" platform_uses_widgets
ask "controls must not know the server" controls_reach_up
ask "a module must not include a window or a control" modules_include_windows
ask "windows include windows only downward" windows_include_upward
ask "calls of the operating system belong into the platform layer" posix_outside_platform
ask "a test waits for a condition, never for time" sleeps
ask "a test that is skipped or can't fail" tests_that_prove_nothing
ask "Python that does not parse" python_that_does_not_parse
ask "a kept oddity names a test that isn't there" oddities_without_test
ask "cppcheck" static_checks
ask "clang-tidy" tidy

[ $bad -eq 0 ] && echo "check: ${#sources[@]} files in order"
exit $bad
