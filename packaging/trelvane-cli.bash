# trelvane-cli.bash: bash completion for trelvane-cli, its commands and their options.

_trelvane_cli() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
  # --option=value: bash splits at the '='
  if [[ $cur == = ]]; then
    cur=
  elif [[ $prev == = && COMP_CWORD -ge 2 ]]; then
    prev=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  COMPREPLY=()

  if ((COMP_CWORD == 1)); then
    COMPREPLY=($(compgen -W 'compare cpg redraw stack batch check-update --help --version' -- "$cur"))
    return
  fi

  # The options are those the command's own --help lists, so they never fall behind it.
  local command=${COMP_WORDS[1]} values=
  case $command in
    compare | cpg | redraw | stack | batch | check-update) ;;
    *) return ;;
  esac
  case $prev in
    --kernel) values='auto scalar generic sse2 avx2 avx512
      generic-u8 generic-i16 avx2-u8 avx2-i16 avx512-u8 avx512-i16' ;;
    --model) values='identity tstv general' ;;
    --to) values='max' ;;
    --mean-sd) values='random observed symmetric' ;;
    --unit) values='frequency number' ;;
    --anchor) values='first centre' ;;
    --coordinates) values='record run' ;;
    --above) values='mean mean+2sd mean+3sd max' ;;
    --window | --from | --resamplings | --identities | --seed | --threads | --size | --ymin | --ymax | \
      --site | --timeout | --min-identity | --min-length | --chrom | --long-region | --short-region | \
      --width | --floor | --name | --title | --seqid | --jobs | --island-length | --island-gc | --island-obs-exp)
      return ;;
  esac

  if [[ -n $values ]]; then
    COMPREPLY=($(compgen -W "$values" -- "$cur"))
  elif [[ $cur == -* ]]; then
    local options
    options=$("${COMP_WORDS[0]}" "$command" --help 2>/dev/null | grep -o -- '--[a-z0-9][a-z0-9-]*' | sort -u)
    COMPREPLY=($(compgen -W "$options" -- "$cur"))
  else
    # sequence files, result files and outputs
    local IFS=$'\n'
    compopt -o filenames 2>/dev/null
    COMPREPLY=($(compgen -f -- "$cur"))
  fi
}
complete -F _trelvane_cli trelvane-cli
