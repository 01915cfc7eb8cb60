// tarnwick-flash: the program without its window, for a terminal or a script.
#include <cstdio>
#include <filesystem>
#include <memory>

#include "app/TrustedKeys.h"
#include "flash/Commands.h"
#include "platform/awake.h"
#include "platform/cli.h"
#include "platform/codepage.h"
#include "platform/files.h"
#include "platform/http/CurlTransport.h"
#include "platform/program.h"
#include "platform/record.h"
#include "platform/signals.h"
#include "webupdate/Start.h"

namespace {

using namespace tarnwick;
using flash::Command;
using flash::Exit;

/// The window's name: settings, note and record are the same, whoever works.
constexpr const char* kName = "Tarnwick";

/// What the work needs, in place around it.
Exit Work(const flash::Arguments& arguments, flash::Output& output) {
  flash::Console user(output, arguments.yes);
  http::CurlTransport transport;
  const std::unique_ptr<awake::IKeeper> awake = awake::SystemKeeper();
  const Beginning beginning = JoinFolder();
  if (const std::string why = WhyNoStart(beginning); !why.empty()) {
    output.Message(why, {});
    return Exit::Refused;
  }
  program::Identity identity = program::This();
  identity.name = kName;
  identity.file = identity.name + std::string(program::kFileEnding);
  program::Set(identity);
  record::Open(identity.folder);
  record::Line("start: tarnwick-flash " + program::VersionText() + ", " + program::SystemText());
  TrustBuiltInKeys();
  const Exit exit = flash::Perform({arguments, output, user});
  record::Close();
  return exit;
}

/// The settings are read in the program's folder: a file that was named in the user's stays what it is.
void FixPath(std::string& name) {
  std::error_code error;
  if (name.empty() || !files::FileExists(name)) return;
  const std::filesystem::path whole = std::filesystem::absolute(name, error);
  if (!error) name = whole.string();
}

flash::Output::Form FormOf(const flash::Arguments& arguments) {
  if (!arguments.json) return flash::Output::Form::Text;
  const bool works = arguments.command == Command::Program || arguments.command == Command::Verify ||
                     arguments.command == Command::Fetch;
  return works ? flash::Output::Form::Stream : flash::Output::Form::Document;
}

}  // namespace

int main(int argc, char** argv) {
  const auto words = std::span(argv, static_cast<std::size_t>(argc)).subspan(1);
  if (const auto answered = cli::AnswerCommonWords(words, "tarnwick-flash", flash::HelpText()))
    return *answered;
  signals::Note();
  std::string wrong;
  auto arguments = flash::ReadArguments(words, wrong);
  if (!arguments) {
    std::fprintf(stderr, "tarnwick-flash: %s\nTry tarnwick-flash --help.\n",
                 text::NamesForTerminal(wrong).c_str());
    return static_cast<int>(Exit::WrongUse);
  }
  FixPath(arguments->operand);
  FixPath(arguments->port);
  flash::Output output(FormOf(*arguments));
  const Exit exit = Work(*arguments, output);
  const bool written = output.End(exit);
  // What became of a device weighs more than an output that nobody took.
  return static_cast<int>(
      written || exit != Exit::Done || arguments->command == Command::Program ? exit : Exit::WrongUse);
}
