// Completion for bash. Words that come from a device or a description are never expanded by the
// shell: they are read line by line and quoted before they reach the command line.
#include <string>

#include "cli/CompletionModel.h"

namespace thermika::cli {

namespace {

constexpr const char* kScript =
    R"sh(# Completion of thermika and thermika-genconfig for bash, by "thermika completion bash".

# Offers the lines of standard input that begin with what is typed, without the part that stays.
_thermika_offer() {
    local word
    while IFS= read -r word; do
        if [[ $word == "$typed"* ]]; then
            word=$(_thermika_quoted "${word#"$kept"}")
        else
            word=$(_thermika_quoted "$word")
            [[ $word == "$typed"* ]] || continue
            word=${word#"$kept"}
        fi
        COMPREPLY+=("$word")
    done
}

_thermika_quoted() {
    if [[ $1 == *[!A-Za-z0-9_.,/+-]* ]]; then printf %q "$1"; else printf %s "$1"; fi
}

_thermika_complete() {
    case $1 in
    files) compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -f -- "$typed") ;;
    folders) compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -d -- "$typed") ;;
    serials) _thermika_offer < <("$program" cameras --serials 2>/dev/null) ;;
    optics) _thermika_offer < <("$program" "${dir[@]}" completion optics "$serial" 2>/dev/null) ;;
    ranges)
        _thermika_offer < <("$program" "${dir[@]}" completion ranges "$serial" "$optics" 2>/dev/null)
        ;;
    words:*) _thermika_offer < <(printf '%s\n' ${1#words:}) ;;
    esac
}

# Bash breaks words at ":" and "=", and replaces only what stands behind the last of these.
_thermika_join() {
    local line=$COMP_LINE word
    local -i i
    words=()
    for ((i = 0; i <= COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if ((i > 0)) && [[ $line != [[:blank:]]* ]]; then
            words[-1]+=$word
        else
            words+=("$word")
        fi
        line=${line#*"$word"}
    done
    typed=${words[-1]}
    [[ $typed == "$word" ]] || kept=${typed%"${typed##*[:=@]}"}
}

_thermika() {
    local program=${1/#\~\//$HOME/} typed= kept= command= option= serial= optics= word value
    local -a dir=() words
    local -i i arguments=0
    type -P -- "$program" >/dev/null || program=thermika
    _thermika_join
    for ((i = 1; i < ${#words[@]} - 1; i++)); do
        word=${words[i]}
        if [[ -z $option && $word == --*=* ]]; then
            option=${word%%=*}
            word=${word#*=}
        fi
        if [[ -n $option ]]; then
            value=${word//[\\\"\']/}
            case $option in
            --dir) dir=(--dir "${value/#\~\//$HOME/}") ;;
            --optics) optics=$value ;;
            esac
            option=
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
    if [[ -z $option && $typed == --*=* ]]; then
        option=${typed%%=*}
        typed=${typed#*=}
        kept=${kept#*=}
    fi
    if [[ -n $option ]]; then
        _thermika_complete "$(_thermika_value "$command" "$option")"
        return
    fi
    if [[ $typed == -* ]]; then
        _thermika_complete "words:$(_thermika_options "$command")"
        return
    fi
    _thermika_complete "$(_thermika_argument "$command" "$arguments")"
}

_thermika_genconfig() {
    local program=thermika typed=$2 kept=
    case $3 in
    -d) _thermika_complete serials ;;
    -t) _thermika_complete folders ;;
    *) [[ $typed == -* ]] && _thermika_complete 'words:-d -t' ;;
    esac
}

complete -F _thermika thermika
complete -F _thermika_genconfig thermika-genconfig
)sh";

}  // namespace

std::string bashCompletion(const CompletionModel& model) {
    return kScript + ("\n" + shellTables(model));
}

}  // namespace thermika::cli
