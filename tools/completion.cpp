#include "completion.h"

#include <sstream>

namespace brenmoor::cli {
namespace {

std::vector<const CLI::App*> subcommandsOf(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App*) { return true; });
}

// One case per command path (" projects list"): the words that may follow it, and which of
// its options take a value.
void addCases(const CLI::App& app, const std::string& path, std::ostringstream& words,
              std::ostringstream& subcommands, std::string& valueOptions) {
  std::string all, names;
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_group().empty()) continue;  // hidden
    for (const auto& name : option->get_lnames()) {
      all += " --" + name;
      if (option->get_type_size_max() > 0) valueOptions += " --" + name;
    }
  }
  for (const CLI::App* sub : subcommandsOf(app)) names += " " + sub->get_name();
  words << "    \"" << path << "\") echo \"" << names << all << "\" ;;\n";
  subcommands << "    \"" << path << "\") echo \"" << names << "\" ;;\n";
  for (const CLI::App* sub : subcommandsOf(app)) {
    addCases(*sub, path + " " + sub->get_name(), words, subcommands, valueOptions);
  }
}

}  // namespace

std::string bashCompletion(const CLI::App& app) {
  std::ostringstream words, subcommands;
  std::string valueOptions;
  addCases(app, "", words, subcommands, valueOptions);
  std::ostringstream script;
  script
      << "# bash completion for brenmoor; made by `brenmoor --completion bash`.\n"
      << "_brenmoor_words() {\n  case \"$1\" in\n"
      << words.str() << "  esac\n}\n"
      << "_brenmoor_subcommands() {\n  case \"$1\" in\n"
      << subcommands.str() << "  esac\n}\n"
      << "_brenmoor() {\n"
      << "  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} path= w\n"
      << "  case \" " << valueOptions << " \" in\n"
      << "    *\" $prev \"*) compopt -o default; COMPREPLY=(); return ;;\n"
      << "  esac\n"
      << "  for w in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
      << "    [[ \" $(_brenmoor_subcommands \"$path\") \" == *\" $w \"* ]] && path=\"$path $w\"\n"
      << "  done\n"
      << "  COMPREPLY=($(compgen -W \"$(_brenmoor_words \"$path\")\" -- \"$cur\"))\n"
      << "}\n"
      << "complete -F _brenmoor brenmoor\n";
  return script.str();
}

}  // namespace brenmoor::cli
