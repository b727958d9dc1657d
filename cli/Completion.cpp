#include "cli/Completion.h"

#include <CLI/CLI.hpp>
#include <sstream>
#include <vector>

namespace cvn73100 {
namespace {

struct Word {
  std::string text;
  std::string help;
};

// One command of the tree: its path of subcommand names from the program, its subcommands and options.
struct Node {
  std::vector<std::string> path;
  std::vector<Word> subcommands;
  std::vector<Word> options;  // "--name" and "-n"
};

std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

void Collect(const CLI::App& app, std::vector<std::string> path, std::vector<Node>& nodes) {
  Node node{path, {}, {}};
  for (const CLI::App* sub : app.get_subcommands([](const CLI::App* a) { return !a->get_name().empty(); })) {
    node.subcommands.push_back({sub->get_name(), FirstLine(sub->get_description())});
  }
  // The program's own options apply after every command (they fall through).
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames())
      node.options.push_back({"--" + name, option->get_description()});
    for (const std::string& name : option->get_snames())
      node.options.push_back({"-" + name, option->get_description()});
  }
  nodes.push_back(node);
  for (const CLI::App* sub : app.get_subcommands([](const CLI::App* a) { return !a->get_name().empty(); })) {
    std::vector<std::string> subPath = path;
    subPath.push_back(sub->get_name());
    Collect(*sub, subPath, nodes);
  }
}

std::string Joined(const std::vector<std::string>& words, const char* separator) {
  std::string out;
  for (const auto& w : words) out += (out.empty() ? "" : separator) + w;
  return out;
}

// The key of a node in the scripts' tables: the program and the subcommands that lead to it.
std::string Key(const std::string& program, const Node& node) {
  return node.path.empty() ? program : program + " " + Joined(node.path, " ");
}

std::string Words(const Node& node) {
  std::vector<std::string> words;
  for (const auto& w : node.subcommands) words.push_back(w.text);
  for (const auto& w : node.options) words.push_back(w.text);
  return Joined(words, " ");
}

// Single-quoted for every shell here: ' becomes '\''.
std::string Quoted(const std::string& text) {
  std::string out = "'";
  for (char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out + "'";
}

std::string Bash(const std::string& program, const std::vector<Node>& nodes) {
  std::ostringstream out;
  out << "# bash completion for " << program << "; generated from its command tree\n"
      << "_" << program << "() {\n"
      << "  local -A tree=(\n";
  for (const Node& node : nodes) out << "    [" << Quoted(Key(program, node)) << "]=" << Quoted(Words(node)) << "\n";
  out << "  )\n"
      << "  local at=" << program << " word i\n"
      << "  for ((i = 1; i < COMP_CWORD; i++)); do\n"
      << "    word=${COMP_WORDS[i]}\n"
      << "    if [[ -n ${tree[\"$at $word\"]+set} ]]; then at=\"$at $word\"; fi\n"
      << "  done\n"
      << "  COMPREPLY=($(compgen -W \"${tree[$at]}\" -- \"${COMP_WORDS[COMP_CWORD]}\"))\n"
      << "}\n"
      << "complete -o default -F _" << program << " " << program << "\n";
  return out.str();
}

std::string Zsh(const std::string& program, const std::vector<Node>& nodes) {
  std::ostringstream out;
  out << "#compdef " << program << "\n# zsh completion for " << program << "; generated from its command tree\n"
      << "_" << program << "() {\n"
      << "  local -A tree\n"
      << "  tree=(\n";
  for (const Node& node : nodes) out << "    " << Quoted(Key(program, node)) << " " << Quoted(Words(node)) << "\n";
  out << "  )\n"
      << "  local at=" << program << " word i\n"
      << "  for ((i = 2; i < CURRENT; i++)); do\n"
      << "    word=${words[i]}\n"
      << "    if (( ${+tree[\"$at $word\"]} )); then at=\"$at $word\"; fi\n"
      << "  done\n"
      << "  compadd -- ${=tree[$at]}\n"
      << "  _files\n"
      << "}\n"
      << "_" << program << " \"$@\"\n";
  return out.str();
}

std::string Fish(const std::string& program, const std::vector<Node>& nodes) {
  std::ostringstream out;
  out << "# fish completion for " << program << "; generated from its command tree\n";
  for (const Node& node : nodes) {
    // At this node: every word of its path seen, and none of its subcommands yet.
    std::vector<std::string> conditions;
    if (node.path.empty()) {
      conditions.push_back("__fish_use_subcommand");
    } else {
      for (const auto& name : node.path) conditions.push_back("__fish_seen_subcommand_from " + name);
    }
    std::vector<std::string> subNames;
    for (const auto& w : node.subcommands) subNames.push_back(w.text);
    std::string condition = Joined(conditions, "; and ");
    if (!node.path.empty() && !subNames.empty()) {
      condition += "; and not __fish_seen_subcommand_from " + Joined(subNames, " ");
    }
    for (const auto& w : node.subcommands) {
      out << "complete -c " << program << " -f -n " << Quoted(condition) << " -a " << Quoted(w.text) << " -d "
          << Quoted(w.help) << "\n";
    }
    for (const auto& w : node.options) {
      const bool isLong = w.text.rfind("--", 0) == 0;
      out << "complete -c " << program << " -n " << Quoted(condition) << (isLong ? " -l " : " -s ")
          << w.text.substr(isLong ? 2 : 1) << " -d " << Quoted(FirstLine(w.help)) << "\n";
    }
  }
  return out.str();
}

}  // namespace

std::string CompletionScript(const CLI::App& app, const std::string& shell) {
  std::vector<Node> nodes;
  Collect(app, {}, nodes);
  const std::string program = app.get_name().empty() ? "cvnscope" : app.get_name();
  if (shell == "bash") return Bash(program, nodes);
  if (shell == "zsh") return Zsh(program, nodes);
  return Fish(program, nodes);
}

}  // namespace cvn73100
