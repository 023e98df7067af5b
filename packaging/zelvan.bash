# Completion of bash for zelvan: keys and their short names, and for many keys their values. Keys come from the
# alias file that is in force, matrices, codon tables and databases from their directories.

# The configuration: ZELVANDIR, else that of the installation which the command belongs to.
_zelvan_config() {
  local command
  if [ -n "${ZELVANDIR+set}" ]; then
    printf '%s' "$ZELVANDIR"
  else
    command=$(readlink -f "$(type -P zelvan)" 2>/dev/null)
    printf '%s' "${command%/*/*}/share/zelvan/config"
  fi
}

# The setting of a key: the last one on the command line, else the one in the defaults file.
_zelvan_setting() {
  local at value=
  for ((at = 1; at + 1 < COMP_CWORD; at += 2)); do
    [ "$(_zelvan_key "${COMP_WORDS[at]}")" = "$1" ] && value=${COMP_WORDS[at + 1]}
  done
  [ -n "$value" ] || value=$(awk -v key="$1" '$1 == key { print $2; exit }' "$(_zelvan_config)/zelvan_defaults.dat" 2>/dev/null)
  printf '%s' "${value:-.}"
}

# The key that a word of the command line names.
_zelvan_key() {
  awk -v word="${1#-}" '{ words = $0; sub(/#.*/, "", words); n = split(words, name)
    for (i = 1; i <= n; i++) if (name[i] == word) { print name[1]; exit } }' "$(_zelvan_config)/zelvan_alias.dat" 2>/dev/null
}

# All keys that have an effect: capitals where capitals were typed, else the short names.
_zelvan_keys() {
  local capitals=0
  [[ $1 == *[A-Z]* ]] && capitals=1
  awk -v capitals=$capitals '/without effect/ { next } { sub(/#.*/, "")
    if (capitals) print "-" $1; else for (i = 2; i <= NF; i++) print "-" $i }' "$(_zelvan_config)/zelvan_alias.dat" 2>/dev/null
}

# Names of the files in a directory, without the directory and without an ending.
_zelvan_files() {
  local file
  for file in "$1"/*"$2"; do
    [ -f "$file" ] || continue
    file=${file##*/}
    printf '%s\n' "${file%"$2"}"
  done
}

# The values of a key that is not about files.
_zelvan_values() {
  case $1 in
    MODE) echo 200 202 210 212 10 12 20 22 99 100 667 ;;
    DO_STATS | PROFILE_WEIGHT_METHOD) echo 0 1 2 ;;
    PROB_TYPE) echo 0 1 2 3 ;;
    PRECISION) echo 1 10 100 ;;
    MATRIX_FILE) _zelvan_files "$(_zelvan_setting MATRIX_DIR)" "" ;;
    CODON_FILE) _zelvan_files "$(_zelvan_setting GENERAL_DIR)" .tst | sed 's/$/.tst/' ;;
    BDB_ROOT)
      _zelvan_files "$(_zelvan_setting DB_DIR)" .bix
      _zelvan_files "$(_zelvan_setting DB_DIR)" .volumes
      ;;
    # a switch or a choice of two, as its description tells
    *) awk -v key="$1" '$1 == key && /# 1:|: 1 |: 0 [^ ]+, 1 / { print "0 1" }' \
      "$(_zelvan_config)/zelvan_alias.dat" 2>/dev/null ;;
  esac
}

_zelvan() {
  local word=${COMP_WORDS[COMP_CWORD]} key
  COMPREPLY=()
  if ((COMP_CWORD % 2 == 1)); then
    local typed=-${word#-}
    mapfile -t COMPREPLY < <(compgen -W "$(_zelvan_keys "$word")" -- "$typed")
    return
  fi
  key=$(_zelvan_key "${COMP_WORDS[COMP_CWORD - 1]}")
  case $key in
    MATRIX_FILE | CODON_FILE) ;;
    *_DIR)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -d -- "$word")
      return
      ;;
    *_FILE | *_FILE_OUT | STDIN | STDOUT | STDERR)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      return
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$(_zelvan_values "$key")" -- "$word")
}

complete -F _zelvan zelvan
