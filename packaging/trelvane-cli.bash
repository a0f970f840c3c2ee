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
    COMPREPLY=($(compgen -W 'compare cpg redraw check-update --help --version' -- "$cur"))
    return
  fi

  local options values=
  case ${COMP_WORDS[1]} in
    compare | cpg)
      options='--window --from --to --resamplings --identities
        --long-complement --long-reverse --long-remove-n
        --short-complement --short-reverse --short-remove-n --show-long --show-short
        --model --aligned --report --rows --result --svg --pdf --png --dotplot
        --seed --kernel --threads --quiet --help --version'
      case $prev in
        --kernel) values='auto scalar generic sse2 avx2 avx512
          generic-u8 generic-i16 avx2-u8 avx2-i16 avx512-u8 avx512-i16' ;;
        --model) values='identity tstv general' ;;
        --to) values='max' ;;
        --window | --from | --resamplings | --identities | --seed | --threads) return ;;
      esac
      ;;
    redraw)
      options='--long --window --cpg --size --default-format --mean-sd --unit --ymin --ymax
        --no-maxmin --no-max-h0 --moving-average --from --to --svg --pdf --png --shapes --help --version'
      case $prev in
        --mean-sd) values='random observed symmetric' ;;
        --unit) values='frequency number' ;;
        --to) values='max' ;;
        --window | --size | --ymin | --ymax | --from) return ;;
      esac
      ;;
    check-update)
      options='--site --timeout --help --version'
      case $prev in
        --site | --timeout) return ;;
      esac
      ;;
    *) return ;;
  esac

  if [[ -n $values ]]; then
    COMPREPLY=($(compgen -W "$values" -- "$cur"))
  elif [[ $cur == -* ]]; then
    COMPREPLY=($(compgen -W "$options" -- "$cur"))
  else
    # sequence files, result files and outputs
    local IFS=$'\n'
    compopt -o filenames 2>/dev/null
    COMPREPLY=($(compgen -f -- "$cur"))
  fi
}
complete -F _trelvane_cli trelvane-cli
