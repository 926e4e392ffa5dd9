# Completion of tarnmail-slurm for bash.

_tarnmail_slurm() {
  local own='-h --help -o --output --plan --resume --status --at-once --retries --stage --merge-options'
  local plan='--target-cost --max-tasks --calibrate --to --one-pdf --no-attachments --no-catalogue --paper'
  plan+=' --no-sandbox --dedupe --folder --from --recipient --subject --since --until --has-attachment --class'
  plan+=' --recover -j --jobs --seconds --memory --temp'
  local sbatch='-A --account -p --partition -q --qos -t --time -c --cpus-per-task --mem --tmp -C --constraint'
  sbatch+=' -w --nodelist -x --exclude --reservation --gres --licenses --begin --mail-type --mail-user'
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()

  # The value of an option.
  case $previous in
    -o | --output | --stage | --temp)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -d -- "$current")
      return
      ;;
    --plan | --calibrate)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      return
      ;;
    --paper)
      mapfile -t COMPREPLY < <(compgen -W 'a4 letter' -- "$current")
      return
      ;;
    -p | --partition)
      mapfile -t COMPREPLY < <(compgen -W "$(sinfo --noheader --format=%R 2>/dev/null)" -- "$current")
      return
      ;;
    --at-once | --retries | --merge-options | --target-cost | --max-tasks | --to | --folder | --from | \
      --recipient | --subject | --since | --until | --class | -j | --jobs | --seconds | --memory | -A | \
      --account | -q | --qos | -t | --time | -c | --cpus-per-task | --mem | --tmp | -C | --constraint | -w | \
      --nodelist | -x | --exclude | --reservation | --gres | --licenses | --begin | --mail-type | \
      --mail-user) return ;;
  esac

  if [[ $current == -?* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$own $plan $sbatch" -- "$current")
  else
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}

complete -F _tarnmail_slurm tarnmail-slurm
