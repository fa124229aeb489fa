#include "commandline.h"

#include <CLI/CLI.hpp>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "exitcode.h"
#include "extract.h"
#include "info.h"
#include "list.h"
#include "morvunp/platform/text.h"
#include "output.h"
#include "password.h"
#include "text.h"

namespace terminal {
namespace {

constexpr const char* kFooter =
    "Exit status:\n"
    "  0    everything came out\n"
    "  1    something was skipped, refused or failed; each is named\n"
    "  2    the archive cannot be opened, or the command line is wrong\n"
    "  130  stopped by Ctrl-C or by a cancelled question\n"
    "  143, 129  stopped by SIGTERM or SIGHUP";

constexpr const char* kListFooter =
    "In the table, \"/\" separates the components of a path, and characters that could\n"
    "drive the terminal are shown as escapes such as \\x1b. Attr: D folder, H hidden.\n"
    "With --json, paths are given exactly as the library does, with a backslash between\n"
    "components. Times are in UTC and absent when not recorded; sizes are in bytes.";

constexpr const char* kExtractFooter =
    "PATH names a file or a folder of the archive. \"/\" and \"\\\" both separate its\n"
    "components. A name that is spelled exactly so wins over one that differs in case.\n"
    "Without a terminal to ask, existing files are kept.";

struct Options {
  bool asJson = false;
  std::string codePage;
  std::string passwordFile;
  std::string overwrite = "ask";
  ExtractCommand extract;
};

void AddArchive(CLI::App& command, Options& options) {
  command.add_option("archive", options.extract.archive, "The archive file")
      ->type_name("")
      ->required();
  command
      .add_option("--codepage", options.codePage,
                  "Code page of names that are not Unicode, such as CP932")
      ->type_name("NAME");
  command
      .add_option("--password-file", options.passwordFile,
                  "File whose first line is the password; - reads standard input")
      ->type_name("FILE");
}

void AddPaths(CLI::App& command, Options& options, const char* help) {
  command.add_option("path", options.extract.paths, help)->type_name("");
}

/// The arguments in the order that the parser wants: from last to first. It
/// takes "[a,b]" apart, so that such a name gets a beginning that means
/// nothing.
std::vector<std::string> ArgumentsOf(int argc, char** argv) {
  std::vector<std::string> arguments;
  for (int i = argc - 1; i > 0; --i) {
    const std::string argument = argv[i];
    const bool isBracketed = argument.starts_with('[') && argument.ends_with(']');
    arguments.push_back(isBracketed ? "./" + argument : argument);
  }
  return arguments;
}

CLI::App* AddList(CLI::App& app, Options& options) {
  CLI::App* const list = app.add_subcommand("list", "List the items of an archive");
  AddArchive(*list, options);
  list->add_flag("--json", options.asJson, "Write one JSON object instead of a table");
  list->footer(kListFooter);
  return list;
}

CLI::App* AddInfo(CLI::App& app, Options& options) {
  CLI::App* const info = app.add_subcommand("info", "Tell about an archive or items of it");
  AddArchive(*info, options);
  AddPaths(*info, options, "Files and folders of the archive; the whole archive when none");
  return info;
}

void AddExtractSwitches(CLI::App& extract, Options& options) {
  auto* const flat = extract.add_flag("--flat", options.extract.isFlat,
                                      "Write all files straight into DIR, without folders");
  extract
      .add_flag("--relative", options.extract.isRelative,
                "Drop the parent folders of a selected folder")
      ->excludes(flat);
  extract
      .add_option("--overwrite", options.overwrite,
                  "Whether existing files are replaced: ask (default), all or none")
      ->type_name("MODE")
      ->check(CLI::IsMember({"ask", "all", "none"}));
  extract.add_flag("-q,--quiet", options.extract.isQuiet,
                   "No progress and no closing line; failures are still named");
}

CLI::App* AddExtract(CLI::App& app, Options& options) {
  CLI::App* const extract = app.add_subcommand("extract", "Unpack an archive or items of it");
  AddArchive(*extract, options);
  AddPaths(*extract, options, "Files and folders of the archive; everything when none");
  extract
      ->add_option("-C,--directory", options.extract.directory,
                   "Folder to unpack to; created with its parents when missing\n"
                   "(default: the current folder)")
      ->type_name("DIR");
  AddExtractSwitches(*extract, options);
  extract->footer(kExtractFooter);
  return extract;
}

Overwrite OverwriteOf(const std::string& text) {
  static const std::map<std::string, Overwrite> kModes{
      {"ask", Overwrite::kAsk}, {"all", Overwrite::kAll}, {"none", Overwrite::kNone}};
  return kModes.at(text);
}

void ApplyCodePage(const std::string& name) {
  if (name.empty() || morvunp::platform::SetAnsiCodePage(name)) return;
  throw CommandError(ShownNativePath(name) + ": not a code page that can be used");
}

/// Help, the version, or what is wrong with the arguments, which it may repeat.
int AnswerOf(const CLI::App& app, const CLI::ParseError& error) {
  std::ostringstream help;
  std::stringstream problem;
  const int exitCode = app.exit(error, help, problem) == 0 ? kExitComplete : kExitUnusable;
  for (std::string line; std::getline(problem, line);) PrintToStderr(ShownNativePath(line) + "\n");
  StandardOutput output;
  output.Text() = help.str();
  return output.Finish(exitCode);
}

}  // namespace

int RunCommandLine(int argc, char** argv) {
  Options options;
  CLI::App app("Lists and unpacks 7z, cabinet, ISO/UDF and RAR archives.", "morvunp");
  app.set_version_flag("--version", std::string("morvunp ") + MORVUNP_VERSION);
  app.footer(kFooter);
  app.require_subcommand(1);
  const CLI::App* const list = AddList(app, options);
  const CLI::App* const info = AddInfo(app, options);
  AddExtract(app, options);
  try {
    app.parse(ArgumentsOf(argc, argv));
  } catch (const CLI::ParseError& error) {
    return AnswerOf(app, error);
  }
  ApplyCodePage(options.codePage);
  std::optional<std::wstring>& password = options.extract.password;
  if (!options.passwordFile.empty()) password = ReadPasswordFile(options.passwordFile);
  if (list->parsed()) return List(options.extract.archive, options.asJson, password);
  if (info->parsed()) return Info(options.extract.archive, options.extract.paths, password);
  options.extract.overwrite = OverwriteOf(options.overwrite);
  return Extract(options.extract);
}

}  // namespace terminal
