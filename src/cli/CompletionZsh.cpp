// Completion for zsh, which quotes what it inserts.
#include <string>

#include "cli/CompletionModel.h"

namespace thermika::cli {

namespace {

constexpr const char* kFunctions =
    R"sh(#compdef thermika thermika-genconfig
# Completion of thermika and thermika-genconfig for zsh, by "thermika completion zsh".

_thermika_complete() {
    case $1 in
    files) _files ;;
    folders) _files -/ ;;
    serials) compadd -- ${(f)"$($program cameras --serials 2>/dev/null)"} ;;
    optics) compadd -- ${(f)"$($program $dir completion optics "$serial" 2>/dev/null)"} ;;
    ranges) compadd -- ${(f)"$($program $dir completion ranges "$serial" "$optics" 2>/dev/null)"} ;;
    words:*) compadd -- ${=1#words:} ;;
    esac
}

_thermika_keep() {
    case $1 in
    --dir) dir=(--dir ${2/#\~\//$HOME/}) ;;
    --optics) optics=$2 ;;
    esac
}

_thermika_of_thermika() {
    local program=${${(Q)words[1]}/#\~\//$HOME/} command= option= serial= optics= word
    local -a dir
    local -i i arguments=0
    whence -p -- $program >/dev/null || program=thermika
    for ((i = 2; i < CURRENT; i++)); do
        word=${(Q)words[i]}
        if [[ -n $option ]]; then
            _thermika_keep $option "$word"
            option=
        elif [[ $word == --*=* ]]; then
            _thermika_keep ${word%%=*} "${word#*=}"
        elif [[ -n $(_thermika_value "$command" "$word") ]]; then
            option=$word
        elif [[ $word == -* ]]; then
            :
        elif [[ -z $command ]]; then
            command=$word
        else
            arguments+=1
            [[ $word == [1-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9] ]] && serial=$word
        fi
    done
    if [[ -z $option && $PREFIX == --*=* ]]; then
        option=${PREFIX%%=*}
        compset -P '*='
    fi
    if [[ -n $option ]]; then
        _thermika_complete "$(_thermika_value "$command" "$option")"
        return
    fi
    if [[ $PREFIX == -* ]]; then
        _thermika_complete "words:$(_thermika_options "$command")"
        return
    fi
    _thermika_complete "$(_thermika_argument "$command" "$arguments")"
}

_thermika_of_genconfig() {
    local program=thermika
    case $words[CURRENT-1] in
    -d) _thermika_complete serials ;;
    -t) _thermika_complete folders ;;
    *) [[ $PREFIX == -* ]] && _thermika_complete 'words:-d -t' ;;
    esac
}

_thermika() {
    if [[ ${words[1]:t} == thermika-genconfig ]]; then
        _thermika_of_genconfig
    else
        _thermika_of_thermika
    fi
}

)sh";

// In a folder of functions, zsh runs the file as the function itself.
constexpr const char* kEnd = R"sh(
if [[ ${funcstack[1]} == _thermika ]]; then
    _thermika "$@"
else
    compdef _thermika thermika thermika-genconfig
fi
)sh";

}  // namespace

std::string zshCompletion(const CompletionModel& model) {
    return kFunctions + shellTables(model) + kEnd;
}

}  // namespace thermika::cli
