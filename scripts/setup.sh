# Sourced by the other scripts: makes sure that the tools they need are on this machine. A tool is a command or a
# path, and the package that brings it. Paths are Debian's: elsewhere, the build tells what is missing.

# What zelvan-easy needs; the program that masks low complexity among it.
easy_packages=()
for module in typer rich dnaio jinja2 zstandard; do
  easy_packages+=("/usr/lib/python3/dist-packages/$module python3-$module")
done
easy_packages+=("tantan tantan")

have() {
  case "$1" in
    /*) [ -e "$1" ] || ! command -v apt-get >/dev/null 2>&1 ;;
    *) command -v "$1" >/dev/null 2>&1 ;;
  esac
}

# install_tools "command package" ... : installs with apt what is missing, where that is possible, and says what.
install_tools() {
  local missing=() pair
  for pair in "$@"; do
    have "${pair% *}" || missing+=("${pair#* }")
  done
  [ ${#missing[@]} -eq 0 ] && return 0

  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null || return 0
    as_root=(sudo -n)
  fi
  command -v apt-get >/dev/null 2>&1 || return 0
  echo "Installing: ${missing[*]}"
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# need_tools: the same, and ends when one is still missing.
need_tools() {
  local pair missing=()
  install_tools "$@" || true
  for pair in "$@"; do
    have "${pair% *}" || missing+=("${pair#* }")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Please install these packages first: ${missing[*]}" >&2
  exit 1
}

# want_tools: the same for what can be done without; one package that is not to be had does not cost the others.
want_tools() {
  local pair
  for pair in "$@"; do
    install_tools "$pair" || true
    have "${pair% *}" || echo "Package ${pair#* } is not installed: the tests that use it are skipped"
  done
}
