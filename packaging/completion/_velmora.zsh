#compdef velmora velmorad velmora-cli
# Completion in zsh for velmora, velmorad and velmora-cli. Verbs and options come from the programs'
# own help, names of controls from the servent that runs.

# Prints "verb NAME:DESCRIPTION" and "option NAME:DESCRIPTION" for what a help text offers.
_velmora_offers() {
  awk '
    function describe() { return substr($0, 30, 1) == " " ? substr($0, 31) : "" }
    /^[^ ].*:$/ { section = $0 }
    /^  -/ && section ~ /^Options/ {
      text = describe(); sub(/^-[a-z],/, "", $1); print "option " $1 ":" text
    }
    /^  [a-z]/ && section !~ /^(Options|Positionals|Examples)/ && $1 !~ /^velmora/ {
      print "verb " $1 ":" describe()
    }' <<<"$1"
}

local program=$words[1] previous=$words[CURRENT-1] current=$words[CURRENT]
local help word
local -a profile verbs offers shown
integer at arguments=0
help=$($program --help 2>/dev/null) || return 1
offers=(${(f)"$(_velmora_offers $help)"})
for ((at = 2; at < CURRENT; ++at)); do
  word=$words[at]
  case $word in
    --profile) (( ++at )); profile=(--profile ${words[at]/#\~/$HOME}) ;;
    --listen | --set | --timeout | --first | --count | --for | --wait | --slot) (( ++at )) ;;
    -*) ;;
    *)
      if (( ${offers[(I)verb $word:*]} )); then
        verbs+=($word)
        help=$($program $verbs --help 2>/dev/null)
        offers=(${(f)"$(_velmora_offers $help)"})
      else
        (( ++arguments ))
      fi
      ;;
  esac
done
if (( $#verbs )); then
  offers+=('option --profile:The servent'\''s profile folder' 'option --json:Print JSON'
           'option --timeout:The longest wait')
fi

if [[ $previous == --profile ]] || { [[ $current != -* ]] && [[ $help == *$'\n  DIR '* ]] }; then
  _files -/
  return
fi
case $previous in
  --listen | --timeout | --first | --count | --for | --wait | --slot) return 1 ;;
esac
if [[ $previous == --set || $current != -* ]] && {
  [[ $previous == --set || $help == *$'\n  CONTROL TEXT ...'* ]] ||
    { (( arguments == 0 )) && [[ $help == *$'\n  CONTROL '* ]] }
}; then
  shown=(${(f)"$(velmora-cli $profile --timeout 1 controls 2>/dev/null | awk 'NR > 1 { print $1 }')"})
  if [[ $previous == --set ]]; then
    compadd -S = -- $shown
  else
    compadd -- $shown
  fi
elif [[ $current == -* ]]; then
  shown=(${${(M)offers:#option *}#option })
  _describe option shown
else
  shown=(${${(M)offers:#verb *}#verb })
  (( arguments )) || shown+=(${=${(M)${(f)help}:#Names: *}#Names: })
  _describe verb shown
fi
