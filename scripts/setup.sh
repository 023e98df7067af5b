# Sourced by the other scripts: makes sure that the tools they need are on this machine.
# need_tools "command package" ... : installs what is missing with apt where that is possible, else names it.

# What zelvan-easy needs; the program that masks low complexity among it.
easy_packages=()
for module in typer rich dnaio jinja2 zstandard; do
  easy_packages+=("/usr/lib/python3/dist-packages/$module python3-$module")
done
easy_packages+=("tantan tantan")

have() {
  case "$1" in
    /*) [ -e "$1" ] ;;
    *) command -v "$1" >/dev/null 2>&1 ;;
  esac
}

need_tools() {
  local missing=() pair
  for pair in "$@"; do
    have "${pair% *}" || missing+=("${pair#* }")
  done
  [ ${#missing[@]} -eq 0 ] && return 0

  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null; then as_root=(sudo -n); else as_root=(false); fi
  fi
  if command -v apt-get >/dev/null 2>&1 && [ "${as_root[0]:-}" != false ]; then
    echo "Installing: ${missing[*]}"
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
  fi
  for pair in "$@"; do
    if ! have "${pair% *}"; then
      echo "Please install these packages first: ${missing[*]}" >&2
      exit 1
    fi
  done
}
