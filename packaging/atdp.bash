# Completion of atdp(1) for bash.                          -*- shell-script -*-

_atdp() {
    local cur prev words cword
    _init_completion || return

    local command="" word
    for word in "${words[@]:1:cword-1}"; do
        case $word in
            describe | probe | info | decode | play | edges)
                command=$word
                break
                ;;
        esac
    done

    case $prev in
        --plugin | -o)
            _filedir
            return
            ;;
        --encoding)
            COMPREPLY=($(compgen -W 'f32 s16 s24' -- "$cur"))
            return
            ;;
        -j | --jobs | --threshold-db | --release | --from | --for | --request | --rate | --channels)
            return
            ;;
    esac

    local options='--help --plugin'
    case $command in
        describe) options+=' --json' ;;
        probe) options+=' --jobs' ;;
        info) options+=' --json --json-lines --jobs --threshold-db --release' ;;
        decode)
            options+=' -o --force --jobs --raw --encoding --from --for --request --rate --channels'
            options+=' --threshold-db'
            ;;
        play) options+=' --rate --channels --threshold-db' ;;
        edges) options+=' -o --threshold-db' ;;
        '') options+=' --version' ;;
    esac

    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
    elif [[ -z $command ]]; then
        COMPREPLY=($(compgen -W 'describe probe info decode play edges' -- "$cur"))
    elif [[ $command != describe ]]; then
        _filedir
    fi
} &&
    complete -F _atdp atdp
