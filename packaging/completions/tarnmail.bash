# Completion of tarnmail for bash.

_tarnmail() {
  local commands='list show export search verify plan run-task missing merge info document pages attachments extract help'
  local common='-h --help --language --in-memory --temp-files --temp'
  local filters='--folder --from --to --subject --since --until --has-attachment --class'
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command='' options word i
  COMPREPLY=()

  # The value of an option.
  case $previous in
    --temp | --all-attachments | --stage)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -d -- "$current")
      return
      ;;
    -o | --output | --calibrate)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      return
      ;;
    --paper)
      mapfile -t COMPREPLY < <(compgen -W 'a4 letter' -- "$current")
      return
      ;;
    --language | -m | --message | --dpi | --folder | --from | --to | --subject | --since | --until | \
      --class | --attachment | --limit | --recipient | -j | --jobs | --seconds | --memory | \
      --target-cost | --max-tasks | --task | --task-offset) return ;;
  esac

  # The command, which is the first word that is no option and no value of one.
  for ((i = 1; i < COMP_CWORD; ++i)); do
    word=${COMP_WORDS[i]}
    case $word in
      --language | --temp) ((++i)) ;;
      -*) ;;
      *)
        command=$word
        break
        ;;
    esac
  done

  case $command in
    '') options="$common -V --version" ;;
    list) options="-h --help --json --folders --embedded $filters --recover --temp" ;;
    export)
      options="-h --help -o --output --to --one-pdf --no-attachments --no-catalogue --paper --no-sandbox --dedupe ${filters/--to/--recipient}"
      options+=' --recover --resume -j --jobs --seconds --memory --temp'
      ;;
    verify) options='-h --help' ;;
    plan)
      options="-h --help -o --output --target-cost --max-tasks --calibrate --to --one-pdf --no-attachments --no-catalogue"
      options+=" --paper --no-sandbox --dedupe ${filters/--to/--recipient} --recover -j --jobs --seconds --memory"
      options+=' --temp'
      ;;
    run-task) options='-h --help -o --output --task --task-offset --stage -j --jobs' ;;
    missing) options='-h --help' ;;
    merge) options='-h --help -j --jobs' ;;
    show) options='-h --help --headers --attachment -o --output --all-attachments --temp' ;;
    search) options="-h --help --json --limit $filters" ;;
    info) options="$common -m --message --text --json --pages --paper --no-sandbox" ;;
    document) options="$common -m --message --text -o --output" ;;
    pages) options="$common -m --message --text -o --output --pdf --dpi --paper --pages --no-sandbox" ;;
    attachments) options="$common -m --message --json" ;;
    extract) options="$common -m --message -o --output" ;;
    help) options='-h --help' ;;
    *) return ;;
  esac

  if [[ $current == -?* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
  elif [[ -z $command || $command == help ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current")
  else
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}

complete -F _tarnmail tarnmail
