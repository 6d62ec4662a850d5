# Completion in bash for velmora, velmorad and velmora-cli. Verbs and options come from the
# programs' own help, names of controls from the servent that runs.

# Prints "verb NAME" and "option NAME" for what a help text on standard input offers.
_velmora_offers() {
  awk '
    /^[^ ].*:$/ { section = $0 }
    /^  -/ && section ~ /^Options/ { sub(/^-[a-z],/, "", $1); print "option", $1 }
    /^  [a-z]/ && section !~ /^(Options|Positionals|Examples)/ && $1 !~ /^velmora/ { print "verb", $1 }'
}

_velmora() {
  local program=$1 word at arguments=0 controls=''
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
  local profile=() verbs=() help offers
  help=$("$program" --help 2>/dev/null) || return
  offers=$(_velmora_offers <<<"$help")
  for ((at = 1; at < COMP_CWORD; ++at)); do
    word=${COMP_WORDS[at]}
    case $word in
      --profile) profile=(--profile "${COMP_WORDS[++at]/#\~/$HOME}") ;;
      --listen | --set | --timeout | --first | --count | --for | --wait | --slot) ((++at)) ;;
      -*) ;;
      *)
        if grep -qxF "verb $word" <<<"$offers"; then
          verbs+=("$word")
          help=$("$program" "${verbs[@]}" --help 2>/dev/null)
          offers=$(_velmora_offers <<<"$help")
        else
          ((++arguments))
        fi
        ;;
    esac
  done
  if [[ ${#verbs[@]} -gt 0 ]]; then
    offers+=$'\noption --profile\noption --json\noption --timeout'
  fi

  if [[ $prev == --profile ]] || { [[ $cur != -* ]] && grep -q '^  DIR ' <<<"$help"; }; then
    mapfile -t COMPREPLY < <(compgen -d -- "$cur")
    compopt -o filenames 2>/dev/null
    return
  fi
  case $prev in
    --set) controls='=' ;;
    --listen | --timeout | --first | --count | --for | --wait | --slot) return ;;
  esac
  if [[ $prev != --set && $cur != -* ]]; then
    if grep -q '^  CONTROL TEXT \.\.\.' <<<"$help" ||
      { [[ $arguments -eq 0 ]] && grep -q '^  CONTROL ' <<<"$help"; }; then
      controls=' '
    fi
  fi
  if [[ -n $controls ]]; then
    word=$(velmora-cli "${profile[@]}" --timeout 1 controls 2>/dev/null |
      awk -v end="${controls% }" 'NR > 1 { print $1 end }')
    [[ $controls == ' ' ]] || compopt -o nospace 2>/dev/null
  elif [[ $cur == -* ]]; then
    word=$(awk '$1 == "option" { print $2 }' <<<"$offers")
  else
    word=$(awk '$1 == "verb" { print $2 }' <<<"$offers")
    [[ $arguments -gt 0 ]] || word+=$'\n'$(sed -n 's/^Names: //p' <<<"$help")
  fi
  mapfile -t COMPREPLY < <(compgen -W "$word" -- "$cur")
}

complete -F _velmora velmora velmorad velmora-cli
