# Completion of brevanholt(1) for bash.
_brevanholt() {
  local current previous words cword
  _init_completion || return
  current=${words[cword]}
  previous=${words[cword - 1]}
  case $previous in
    --share-text | --ui-argument) return ;;
    --ui-bundle) _filedir -d && return ;;
  esac
  if [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '--choose-files --developer-tools --help --login-item
      --quit --share --share-clipboard --share-text --ui-argument --ui-bundle --version' -- "$current")
  elif [[ " ${words[*]} " == *' --share '* ]]; then
    _filedir
  fi
} && complete -F _brevanholt brevanholt
