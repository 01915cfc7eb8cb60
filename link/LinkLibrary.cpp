#include "link/LinkLibrary.h"

#include <string_view>
#include <utility>

#include "platform/SharedLibrary.h"
#include "platform/program.h"
#include "platform/record.h"
#include "platform/text.h"

namespace tarnwick {
namespace {

using Word = std::int32_t;

/// Resolves exports one by one and remembers the first that was missing.
class Resolver {
 public:
  explicit Resolver(const SharedLibrary& library) : mLibrary(library) {}
  void* Find(const char* decorated) {
    void* const found = mLibrary.Find(decorated);
    if (found == nullptr && mMissing.empty()) mMissing = decorated;
    return found;
  }
  /// One that the library may lack; null then.
  void* FindOptional(const char* decorated) const { return mLibrary.Find(decorated); }
  /// Empty when none is missing.
  const std::string& Missing() const { return mMissing; }

 private:
  const SharedLibrary& mLibrary;
  std::string mMissing;
};

/// One export, callable once it was found.
template <class... Arguments>
class Export {
 public:
  Export(Resolver& resolver, const char* decorated)
      : mCall(reinterpret_cast<Word (*)(Arguments...)>(resolver.Find(decorated))) {}
  Word operator()(Arguments... arguments) const { return mCall(arguments...); }

 private:
  Word (*mCall)(Arguments...);
};

/// Every export that the program relies on, by its decorated name.
struct Exports {
  explicit Exports(const SharedLibrary& library) : resolver(library) {}

  Resolver resolver;
  Export<Word*, Word*, Word*> getDllVersion{resolver, "_getDllVersion@12"};
  Export<Word, Word> debugFilter{resolver, "_debugFilter@8"};
  Export<const char*> initSerialCommon{resolver, "_initSerialCommon@4"};
  Export<> getSerialMode{resolver, "_getSerialMode@0"};
  Export<> lockHc{resolver, "_lockHc@0"};
  Export<> doTestForSkelmirra{resolver, "_doTestForSkelmirra@0"};
  Export<> doTestForUpgradeSupport{resolver, "_doTestForUpgradeSupport@0"};
  Export<Word, Word*> getModelCommon{resolver, "_getModelCommon@8"};
  Export<Word, Word*, Word*> getMcStateCommon{resolver, "_getMcStateCommon@12"};
  Export<Word, Word*> getHwRevCommon{resolver, "_getHwRevCommon@8"};
  Export<Word, Word*> getHwRevFromBootCommon{resolver, "_getHwRevFromBootCommon@8"};
  Export<Word, Word*> getVersionFromBootCommon{resolver, "_getVersionFromBootCommon@8"};
  Export<Word, Word, Word, Word*> readMcProgMemCommon{resolver, "_readMcProgMemCommon@16"};
  Export<Word> enterBootCommon{resolver, "_enterBootCommon@4"};
  Export<Word> startProgrammingCommon{resolver, "_startProgrammingCommon@4"};
  Export<Word, Word, const Word*> sendDataCommon{resolver, "_sendDataCommon@12"};
  Export<Word> endProgrammingCommon{resolver, "_endProgrammingCommon@4"};
  /// Null in a library that tells nothing.
  Word (*getLinkNote)(char*, Word) =
      reinterpret_cast<Word (*)(char*, Word)>(resolver.FindOptional("_getLinkNote@8"));
};

/// The library as loaded.
class LoadedLibrary final : public ILinkLibrary {
 public:
  explicit LoadedLibrary(std::unique_ptr<SharedLibrary> library)
      : mLibrary(std::move(library)), mExports(*mLibrary) {}

  const std::string& Missing() const { return mExports.resolver.Missing(); }

  std::array<Word, 3> getDllVersion() override {
    std::array<Word, 3> version{};
    mExports.getDllVersion(&version[0], &version[1], &version[2]);
    return version;
  }
  void debugFilter(Word filter) override { mExports.debugFilter(1, filter); }
  Word initSerialCommon(const std::string& port) override { return mExports.initSerialCommon(port.c_str()); }
  Word getSerialMode() override { return mExports.getSerialMode(); }
  void lockHc() override { mExports.lockHc(); }
  Word doTestForSkelmirra() override { return mExports.doTestForSkelmirra(); }
  Word doTestForUpgradeSupport() override { return mExports.doTestForUpgradeSupport(); }
  Word getModelCommon(Word address, Word& model) override { return mExports.getModelCommon(address, &model); }
  Word getMcStateCommon(Word address, Word& major, Word& minor) override {
    return mExports.getMcStateCommon(address, &major, &minor);
  }
  Word getHwRevCommon(Word address, Word& revision) override {
    return mExports.getHwRevCommon(address, &revision);
  }
  Word getHwRevFromBootCommon(Word address, Word& revision) override {
    return mExports.getHwRevFromBootCommon(address, &revision);
  }
  Word getVersionFromBootCommon(Word address, Word& version) override {
    return mExports.getVersionFromBootCommon(address, &version);
  }
  Word readMcProgMemCommon(Word address, Word first, Word last, std::span<Word> words) override {
    // The library knows no length and would write past the end.
    const std::int64_t needed = std::int64_t{last} - first + 1;
    if (needed < 1 || static_cast<std::uint64_t>(needed) > words.size()) return 0;
    return mExports.readMcProgMemCommon(address, first, last, words.data());
  }
  Word enterBootCommon(Word address) override { return mExports.enterBootCommon(address); }
  Word startProgrammingCommon(Word address) override { return mExports.startProgrammingCommon(address); }
  Word sendDataCommon(Word address, std::span<const Word> elements) override {
    return mExports.sendDataCommon(address, static_cast<Word>(elements.size()), elements.data());
  }
  Word endProgrammingCommon(Word address) override { return mExports.endProgrammingCommon(address); }
  std::string getLinkNote() override {
    if (mExports.getLinkNote == nullptr) return {};
    std::array<char, 1024> text{};
    mExports.getLinkNote(text.data(), static_cast<Word>(text.size()));
    return text.data();
  }

 private:
  std::unique_ptr<SharedLibrary> mLibrary;
  Exports mExports;
};

/// Stands in for a library that cannot be used: every call fails, each in its own way.
class NoLibrary final : public ILinkLibrary {
 public:
  explicit NoLibrary(std::string cause) : mCause(std::move(cause)) {}
  std::array<Word, 3> getDllVersion() override { return {}; }
  void debugFilter(Word) override {}
  Word initSerialCommon(const std::string&) override { return -1; }
  Word getSerialMode() override { return 0; }
  void lockHc() override {}
  Word doTestForSkelmirra() override { return 0; }
  Word doTestForUpgradeSupport() override { return 1; }
  Word getModelCommon(Word, Word&) override { return 0; }
  Word getMcStateCommon(Word, Word&, Word&) override { return 0; }
  Word getHwRevCommon(Word, Word&) override { return 0; }
  Word getHwRevFromBootCommon(Word, Word&) override { return 0; }
  Word getVersionFromBootCommon(Word, Word&) override { return -1; }
  Word readMcProgMemCommon(Word, Word, Word, std::span<Word>) override { return 0; }
  Word enterBootCommon(Word) override { return 0; }
  Word startProgrammingCommon(Word) override { return 0; }
  Word sendDataCommon(Word, std::span<const Word>) override { return 0; }
  Word endProgrammingCommon(Word) override { return 0; }
  std::string getLinkNote() override { return "cause: the link library cannot be used: " + mCause + "\n"; }

 private:
  const std::string mCause;
};

std::string gLoaded;

/// A line of the note in its two parts; both are empty for any other line.
std::pair<std::string_view, std::string_view> KeyAndValue(std::string_view line) {
  constexpr std::string_view kBetween = ": ";
  const std::size_t at = line.find(kBetween);
  if (at == std::string_view::npos) return {};
  return {line.substr(0, at), line.substr(at + kBetween.size())};
}

}  // namespace

std::unique_ptr<ILinkLibrary> LoadLinkLibrary(const std::filesystem::path& path) {
  std::string cause;
  if (auto file = SharedLibrary::Open(path, cause)) {
    auto library = std::make_unique<LoadedLibrary>(std::move(file));
    if (library->Missing().empty()) {
      const auto [major, minor, build] = library->getDllVersion();
      gLoaded = path.filename().string() + " " + std::to_string(major) + "." + std::to_string(minor) + "." +
                std::to_string(build);
      record::Line("link library: " + gLoaded);
      return library;
    }
    cause = "it lacks the export " + library->Missing();
  }
  gLoaded = "no link library: " + cause;
  record::Failure("loading the link library " + path.filename().string(), cause);
  return std::make_unique<NoLibrary>(cause);
}

const std::string& LoadedLibraryText() {
  return gLoaded;
}

LinkNote ReadLinkNote() {
  const std::string text = Link().getLinkNote();
  LinkNote note;
  for (std::string_view line : text::Split(text, '\n')) {
    const auto [key, value] = KeyAndValue(line);
    if (key == "cause") note.cause = value;
    if (key == "speed") note.speed = text::ToInt32(text::NumericPrefix(value));
    if (key == "repeats") note.repeats = text::ToInt32(text::NumericPrefix(value));
  }
  return note;
}

std::filesystem::path LinkLibraryFile() {
  std::filesystem::path file = program::LibraryFolder() / kLinkLibraryName;
  return file += kSharedLibraryEnding;
}

ILinkLibrary& Link() {
  if (ILinkLibrary* const other = Seam<ILinkLibrary>::Used()) return *other;
  static const std::unique_ptr<ILinkLibrary> loaded = LoadLinkLibrary(LinkLibraryFile());
  return *loaded;
}

}  // namespace tarnwick
