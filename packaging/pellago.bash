# bash completion for pellago: subcommands, options, and file names of the kind each argument takes.
_pellago() {
  local cur prev words cword
  _init_completion || return

  local command="" word
  for word in "${words[@]:1:cword-1}"; do
    case $word in
      -*) ;;
      *) command=$word && break ;;
    esac
  done

  if [[ -z $command ]]; then
    COMPREPLY=($(compgen -W 'merge inspect check export frames --help --version' -- "$cur"))
    return
  fi

  if [[ $cur == -* ]]; then
    case $command in
      merge) COMPREPLY=($(compgen -W '--quiet --strict --classic --help' -- "$cur")) ;;
      check) COMPREPLY=($(compgen -W '--json --changes --classic --help' -- "$cur")) ;;
      export) COMPREPLY=($(compgen -W '--force --help' -- "$cur")) ;;
      *) COMPREPLY=($(compgen -W '--help' -- "$cur")) ;;
    esac
    return
  fi

  # The position of the current word among the command's arguments, options left out.
  local position=0
  for word in "${words[@]:2:cword-2}"; do
    [[ $word == -* ]] || ((position++))
  done

  case $command:$position in
    merge:0 | inspect:0 | check:0) _filedir '@(xls|xlsx)' ;;
    merge:1 | merge:2 | check:1 | export:0) _filedir xml ;;
    export:1) _filedir xlsx ;;
    frames:2) COMPREPLY=($(compgen -W 'DF NDF' -- "$cur")) ;;
  esac
} && complete -F _pellago pellago
