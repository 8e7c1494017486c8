#include "command/Completion.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "base/IgnoreCase.h"
#include "client/Failure.h"
#include "tables/SdkParameterTable.h"

namespace marovine::host {

namespace {

bool startsLike(std::string_view text, std::string_view beginning) {
    return text.size() >= beginning.size() && equalIgnoringCase(text.substr(0, beginning.size()), beginning);
}

const OptionText* findOption(const CommandText& command, std::string_view name) {
    for (const auto& option : command.options)
        if (!option.isArgument && std::ranges::find(option.names, name) != option.names.end()) return &option;
    return nullptr;
}

const CommandText* findCommand(const CommandText& parent, std::string_view name) {
    const auto found = std::ranges::find(parent.commands, name, &CommandText::name);
    return found != parent.commands.end() ? &*found : nullptr;
}

/// The argument at a position; the last one may be repeated.
const OptionText* argumentAt(const CommandText& command, std::size_t position) {
    const OptionText* last = nullptr;
    for (const auto& option : command.options) {
        if (!option.isArgument) continue;
        last = &option;
        if (position-- == 0) break;
    }
    return last;
}

/// Parameters whose names begin like the word; behind a "=", the entries of the parameter before it.
void addParameters(std::vector<Candidate>& candidates, std::string_view word, bool withValue) {
    const auto sign = withValue ? word.find('=') : std::string_view::npos;
    if (sign != std::string_view::npos) {
        const auto row = std::ranges::find_if(sdkParameters, [&](const auto& each) {
            return equalIgnoringCase(each.name, word.substr(0, sign));
        });
        if (row == sdkParameters.end()) return;
        const auto* entries = std::get_if<EntryList>(&row->range);
        if (entries == nullptr) return;
        for (const auto& entry : *entries)
            if (startsLike(entry.constantName, word.substr(sign + 1)))
                candidates.push_back(
                    {std::string(word.substr(0, sign + 1)) + entry.constantName, entry.displayName});
        return;
    }
    for (const auto& row : sdkParameters) {
        if (withValue && row.access == Access::ReadOnly) continue;
        if (startsLike(row.name, word))
            candidates.push_back({std::string(row.name) + (withValue ? "=" : ""), row.displayName});
    }
}

void addCommands(std::vector<Candidate>& candidates, const CommandText& parent, std::string_view word) {
    for (const auto& command : parent.commands)
        if (command.name.starts_with(word)) candidates.push_back({command.name, command.summary});
}

void addOptions(std::vector<Candidate>& candidates, const CommandText& command, std::string_view word) {
    for (const auto& option : command.options)
        for (const auto& name : option.names)
            if (!option.isArgument && name.starts_with(word)) candidates.push_back({name, option.help});
}

/// What a value of an option or an argument may be, as its type says it in the help.
void addValues(Completions& result, const CommandText& program, const OptionText& option,
               std::string_view word) {
    const std::string& type = option.isArgument && option.type.empty() ? option.names.front() : option.type;
    for (const auto& choice : option.choices)
        if (startsLike(choice, word)) result.candidates.push_back({choice, ""});
    if (type == "COMMAND") addCommands(result.candidates, program, word);
    if (type == "NAME" || type == "PATTERN") addParameters(result.candidates, word, false);
    if (type == "NAME=VALUE") addParameters(result.candidates, word, true);
    if (const auto point = type.find('.'); point != type.npos) result.files = "*" + type.substr(point);
    if (type == "FILE" || type == "PATH" || type == "FOLDER") result.files = "*";
}

struct Script {
    const char* shell;
    const char* text;
};

constexpr Script kScripts[] = {
    {"bash", R"(# Completion of marovine for bash.
_marovine() {
    local line=${COMP_LINE:0:COMP_POINT} word files text
    local -a words
    read -ra words <<<"$line"
    [[ $line == *[[:space:]] ]] && words+=("")
    word=${words[-1]}
    # bash takes "NAME=VALUE" for three words: it replaces only what stands behind the sign.
    local before=
    [[ $word == *=* && $COMP_WORDBREAKS == *=* ]] && before=${word%%=*}=
    COMPREPLY=()
    while IFS=$'\t' read -r text _; do
        if [[ $text == :files* ]]; then
            files=${text#:files }
            while IFS= read -r text; do COMPREPLY+=("$text"); done < <(compgen -G "$word$files"; compgen -d -- "$word")
        else
            COMPREPLY+=("${text#"$before"}")
        fi
    done < <("${words[0]}" complete "${words[@]:1}" 2>/dev/null)
    [[ ${#COMPREPLY[@]} -eq 1 && ( ${COMPREPLY[0]} == *= || -d ${COMPREPLY[0]} ) ]] && compopt -o nospace
    [[ -n $files ]] && compopt -o filenames
}
complete -F _marovine marovine
)"},
    {"zsh", R"(#compdef marovine
# Completion of marovine for zsh.
local line text summary
local -a plain open
while IFS=$'\t' read -r text summary; do
    if [[ $text == :files* ]]; then
        _files -g "${text#:files }"
    elif [[ $text == *= ]]; then
        open+=("${text//:/\\:}:$summary")
    else
        plain+=("${text//:/\\:}:$summary")
    fi
done < <("${words[1]}" complete "${(@)words[2,CURRENT]}" 2>/dev/null)
(( $#plain )) && _describe marovine plain
(( $#open )) && _describe parameter open -S ''
)"},
    {"fish", R"(# Completion of marovine for fish.
function __marovine_complete
    set -l words (commandline -opc) (commandline -ct)
    for line in ($words[1] complete $words[2..-1] 2>/dev/null)
        if string match -q ':files*' -- $line
            __fish_complete_path (commandline -ct)
        else
            echo $line
        end
    end
end
complete -c marovine -f -a '(__marovine_complete)'
)"},
};

}  // namespace

Completions complete(const CommandText& program, const std::vector<std::string>& words) {
    Completions result;
    if (words.empty()) return result;
    const CommandText* command = &program;
    const OptionText* pending = nullptr;  // an option whose value comes next
    std::size_t arguments = 0;
    for (auto word = words.begin(); word != words.end() - 1; ++word) {
        if (pending != nullptr) {
            pending = nullptr;
        } else if (word->starts_with('-')) {
            const OptionText* option = findOption(*command, *word);
            if (option == nullptr) option = findOption(program, *word);
            if (option != nullptr && !option->type.empty()) pending = option;
        } else if (const CommandText* below = findCommand(*command, *word); below != nullptr) {
            command = below;
            arguments = 0;
        } else {
            ++arguments;
        }
    }
    const std::string& word = words.back();
    if (pending != nullptr) {
        addValues(result, program, *pending, word);
    } else if (word.starts_with('-')) {
        addOptions(result.candidates, *command, word);
        if (command != &program) addOptions(result.candidates, program, word);
    } else {
        addCommands(result.candidates, *command, word);
        if (const OptionText* argument = argumentAt(*command, arguments))
            addValues(result, program, *argument, word);
    }
    return result;
}

void printCompletions(std::ostream& out, const Completions& completions) {
    for (const auto& candidate : completions.candidates)
        out << candidate.text << '\t' << candidate.summary << '\n';
    if (!completions.files.empty()) out << ":files " << completions.files << '\n';
}

std::string completionScript(const std::string& shell) {
    for (const auto& script : kScripts)
        if (shell == script.shell) return script.text;
    throw Failure("there is no completion for " + shell + ": bash, zsh and fish have one");
}

}  // namespace marovine::host
