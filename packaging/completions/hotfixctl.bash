# shellcheck shell=bash
# Completion of hotfixctl's command lines in bash, of 3.2 too. The program that is called tells itself
# what can come next.

_hotfixctl() {
  local word kind cut='' words=()
  COMPREPLY=()
  # The shell takes --option=value for three words.
  for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
    local last=$((${#words[@]} - 1))
    if ((last >= 0)) && [[ ${words[last]} == --*= || ${words[last]} == --* && $word == '=' ]]; then
      words[last]+=$word
    else
      words+=("$word")
    fi
  done
  local begun=${words[${#words[@]} - 1]}
  if [[ $begun == --*=* && $COMP_WORDBREAKS == *=* ]]; then cut=${begun%%=*}=; fi

  {
    read -r kind
    while IFS=$'\t' read -r word _; do
      if [[ $word == "$begun"* ]]; then COMPREPLY+=("${word#"$cut"}"); fi
    done
  } < <("${COMP_WORDS[0]}" --complete "${words[@]}" 2>/dev/null)

  # Files are looked for by the shell itself, which knows how to quote them. Older ones do so always.
  case $kind in
    files) ;;
    folders) compopt +o default -o dirnames 2>/dev/null ;;
    *) compopt +o default 2>/dev/null ;;
  esac
}

complete -o default -F _hotfixctl hotfixctl
