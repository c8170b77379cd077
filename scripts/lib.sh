# shellcheck shell=bash
# Functions that more than one script uses. Sourcing this file runs nothing.

# Prints the comment block at the head of the calling script: its help text.
printHelp() {
  sed -n '2,/^[^#]/{/^#/!d;s/^# \{0,1\}//;p}' "$0"
}

# fail CAUSE REMEDY: one line for each on standard error, then exit status 1.
fail() {
  printf '%s: error: %s\n' "${0##*/}" "$1" >&2
  printf '%s: remedy: %s\n' "${0##*/}" "$2" >&2
  exit 1
}

# failUsage TEXT: a wrong command line, exit status 2.
failUsage() {
  printf '%s: %s (see %s --help)\n' "${0##*/}" "$1" "$0" >&2
  exit 2
}

# buildPreset PRESET [TARGET...]: configures and builds in build/PRESET of the current folder.
buildPreset() {
  local preset=$1 jobs
  shift
  jobs=$(nproc)
  cmake --preset "$preset" --log-level=WARNING
  cmake --build --preset "$preset" -j "$jobs" ${1+--target "$@"}
}

# Runs a command without address randomisation where the kernel lets us: the sanitizers' fixed
# shadow ranges collide with the wide randomisation of newer kernels.
runWithPlainAddresses() {
  if setarch -R true 2>/dev/null; then
    setarch -R "$@"
  else
    "$@"
  fi
}
