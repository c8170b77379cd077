# Completes agctl's command lines in bash. Printed by: agctl completion bash
_agctl() {
  local rest=$COMP_LINE index word cut='' breaks typed=()
  # readline also ends words at : and =; only where a blank stands between them they are two.
  for ((index = 0; index <= COMP_CWORD; ++index)); do
    word=${COMP_WORDS[index]}
    if ((index == 0)) || [[ $rest == [[:blank:]]* ]]; then
      typed+=('')
    fi
    rest=${rest#"${rest%%[![:blank:]]*}"}
    rest=${rest#"$word"}
    word=${word//[\"\'\\]/}
    typed[-1]+=${word/#\~\//"$HOME/"}
  done
  # What readline takes for a word of its own stays as it is.
  breaks=${COMP_WORDBREAKS//[^:=]/}
  if [[ -n $breaks ]]; then
    cut=${typed[-1]%"${typed[-1]##*[$breaks]}"}
  fi
  mapfile -t COMPREPLY < <("${typed[0]}" completion words -- "${typed[@]:1}" 2>/dev/null)
  if [[ ${COMPREPLY[0]-} == '*' ]]; then
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "${typed[-1]#"$cut"}")
  else
    COMPREPLY=("${COMPREPLY[@]#"$cut"}")
  fi
}
complete -F _agctl agctl
