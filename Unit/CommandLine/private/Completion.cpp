#include "Unit/CommandLine/Completion.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace
{
/** What may follow: kinds of values by "path:option" or "path:number of the argument", and next words by path. */
struct Rules
{
    std::string sCommands; // patterns of paths with their subcommands
    std::string sKinds;
    std::string sNextWords;
};

/** @return the words of a type name such as "DBM|{unit-file}", with blanks between them */
std::string wordsOf(const std::string& sTypeName)
{
    const std::size_t nBegin = sTypeName.find('{');
    const std::size_t nEnd = sTypeName.find('}');
    if (nBegin == std::string::npos || nEnd == std::string::npos || nEnd < nBegin) {
        return {};
    }
    std::string sWords = sTypeName.substr(nBegin + 1, nEnd - nBegin - 1);
    std::replace(sWords.begin(), sWords.end(), ',', ' ');
    return sWords;
}

/** @return "file", "words on off" or "value"; with "optional" before it where the value may be left out */
std::string kindOf(const CLI::Option& option)
{
    const std::string sTypeName = option.get_type_name();
    const std::string sWords = wordsOf(sTypeName);
    std::string sKind = sWords.empty() ? "value" : "words " + sWords;
    if (sTypeName == "FILE") {
        sKind = "file";
    }
    return option.get_items_expected_min() == 0 ? "optional " + sKind : sKind;
}

/** @return patterns for an option at a command; one that hands down its options has them below itself, too */
std::string patternsFor(const std::string& sPath, const std::string& sName, bool bHandedDown)
{
    const std::string sOwn = fmt::format("'{}:{}'", sPath, sName);
    return bHandedDown ? fmt::format("{} | '{} '*':{}'", sOwn, sPath, sName) : sOwn;
}

bool handsDownOptions(const CLI::App& app)
{
    const auto subcommands = app.get_subcommands([](const CLI::App*) { return true; });
    return std::any_of(subcommands.begin(), subcommands.end(),
                       [](const CLI::App* pSubcommand) { return pSubcommand->get_fallthrough(); });
}

std::vector<std::string> namesOf(const CLI::Option& option)
{
    std::vector<std::string> names;
    for (const std::string& sName : option.get_lnames()) {
        names.push_back("--" + sName);
    }
    for (const std::string& sName : option.get_snames()) {
        names.push_back("-" + sName);
    }
    return names;
}

/** @param sInherited options that the commands above hand down */
void addCommand(Rules& rules, const CLI::App& app, const std::string& sPath, const std::string& sInherited)
{
    std::string sOptions = sInherited;
    std::string sHandedDown = sInherited;
    int nArgument = 0;
    for (const CLI::Option* pOption : app.get_options()) {
        if (pOption->get_positional() && namesOf(*pOption).empty()) {
            rules.sKinds += fmt::format("        '{}:{}') REPLY='{}' ;;\n", sPath, ++nArgument, kindOf(*pOption));
            continue;
        }
        const bool bFlag = pOption->get_items_expected_max() == 0;
        for (const std::string& sName : namesOf(*pOption)) {
            sOptions += " " + sName;
            sHandedDown += pOption == app.get_help_ptr() || !handsDownOptions(app) ? "" : " " + sName;
            if (!bFlag) {
                rules.sKinds += fmt::format("        {}) REPLY='{}' ;;\n",
                                            patternsFor(sPath, sName, handsDownOptions(app)), kindOf(*pOption));
            }
        }
    }
    std::string sSubcommands;
    for (const CLI::App* pSubcommand : app.get_subcommands([](const CLI::App*) { return true; })) {
        const std::string sName = pSubcommand->get_name();
        sSubcommands += (sSubcommands.empty() ? "" : " ") + sName;
        rules.sCommands += fmt::format("{}'{}:{}'", rules.sCommands.empty() ? "" : " | ", sPath, sName);
        addCommand(rules, *pSubcommand, fmt::format("{} {}", sPath, sName),
                   pSubcommand->get_fallthrough() ? sHandedDown : "");
    }
    rules.sNextWords += fmt::format("        '{}') commands='{}' options='{}' ;;\n", sPath, sSubcommands, sOptions);
}

constexpr const char* SCRIPT =
    R"BASH(# Completion for @PROGRAM@ in bash; read it with: source <(@PROGRAM@ completion bash)

# What a value is, by command and option or number of the argument.
_@PROGRAM@_kind()
{
    case "$1" in
@KINDS@        *) REPLY='' ;;
    esac
}

_@PROGRAM@_complete()
{
    local current="${COMP_WORDS[COMP_CWORD]}" path='@PROGRAM@' arguments=0 pending='' commands='' options='' REPLY='' i word
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        word="${COMP_WORDS[i]}"
        # bash takes words apart at these: --option=value and addresses.
        if [[ $word == '=' ]]; then
            continue
        fi
        if [[ $word == ':' ]]; then
            i=$((i + 1))
            continue
        fi
        if [[ -n $pending && ($pending != optional* || $word =~ ^[0-9.]+$) ]]; then
            pending=''
            continue
        fi
        pending=''
        case "$path:$word" in
            @COMMANDS@)
                path+=" $word"
                arguments=0
                ;;
            *:--*)
                _@PROGRAM@_kind "$path:$word"
                pending="$REPLY"
                ;;
            *) arguments=$((arguments + 1)) ;;
        esac
    done
    if [[ $current == '=' ]]; then
        current=''
    fi
    case "$path" in
@NEXT_WORDS@    esac
    if [[ -z $pending || $pending == optional* ]]; then
        if [[ $current == -* ]]; then
            mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
            return
        fi
        _@PROGRAM@_kind "$path:$((arguments + 1))"
        pending="$REPLY"
        mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current")
    fi
    pending="${pending#optional }"
    case "$pending" in
        file)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            ;;
        words*) mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W "${pending#words }" -- "$current") ;;
    esac
}

complete -F _@PROGRAM@_complete @PROGRAM@
)BASH";

void replaceAll(std::string& sText, const std::string& sOld, const std::string& sNew)
{
    for (std::size_t nPlace = sText.find(sOld); nPlace != std::string::npos;
         nPlace = sText.find(sOld, nPlace + sNew.size()))
    {
        sText.replace(nPlace, sOld.size(), sNew);
    }
}
} // namespace

std::string bashCompletion(const CLI::App& app)
{
    Rules rules;
    addCommand(rules, app, app.get_name(), "");
    std::string sScript = SCRIPT;
    replaceAll(sScript, "@KINDS@", rules.sKinds);
    replaceAll(sScript, "@COMMANDS@", rules.sCommands);
    replaceAll(sScript, "@NEXT_WORDS@", rules.sNextWords);
    replaceAll(sScript, "@PROGRAM@", app.get_name());
    return sScript;
}
