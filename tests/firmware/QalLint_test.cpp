// What is said of a package, by line. Harmful remarks stand with a "!".
#include "firmware/QalLint.h"

#include <gtest/gtest.h>

#include "firmware/BootPackages.h"
#include "firmware/SignatureLine.h"

namespace tarnwick::test {
namespace {

const std::string kHead = "FILENAME=a.qal\r\nMODELNUMBER=5\r\n";
const std::string kDevice = "DEVICE_ADDRESS_VERSION=M, 16, X0100\r\n";
const std::string kStart = "START_HEX=X0100\r\n", kEnd = "END_HEX=X0100\r\n";
const std::string kRecord = ":080000000102030405060708D4\r\n", kRecord8 =
                                                                   ":08001000010203040506070"
                                                                   "8C4\r\n";
const std::string kGood = kHead + kDevice + kStart + kRecord + kEnd;

const std::string kLeft = kHead + kDevice + kStart + kRecord, kNoBlock = kHead + kDevice + kRecord + kStart;
const std::string kMark = "\xEF\xBB\xBF", kLine(5000, 'x');
const std::string kSignature =
    std::string(kSignatureBefore) + std::string(88, 'A') + std::string(kSignatureBehind);

std::string Other(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

std::string Wide(const std::string& text) {
  std::string wide = "\xFF\xFE";
  for (const char c : text) wide += {c, '\0'};
  return wide;
}

/// "2! what", one behind the other.
std::string Said(const std::string& text, std::size_t piece = 1u << 20) {
  QALclass package;
  if (!text.empty()) package.LoadQALfile({}, text);
  QalLint lint("a.qal");
  for (std::size_t at = 0; at < text.size(); at += piece) lint.Add(std::string_view(text).substr(at, piece));
  std::string said;
  for (const QalRemark& remark : lint.Finish(package))
    said += std::to_string(remark.Line) + (remark.Harmful ? "! " : " ") + remark.What + "; ";
  return said;
}

TEST(QalLint, SaysWhatTheFormatPassesOver) {
  const struct {
    std::string text;
    std::vector<const char*> said;  ///< In this order; nothing for a package without a remark.
  } cases[] = {
      {kGood, {}},
      {kGood + kSignature, {}},
      {"; a = b\r\n;:x\r\n\r\n" + kGood, {}},
      {Other(kGood, "\r\n", "\n"),
       {"0! no MODELNUMBER", "0! no device", "1! what stands behind", "1! 6 line ends"}},
      {Other(kGood, "\r\n", "\r"),
       {"0! no MODELNUMBER", "0! no device", "1! what stands behind", "1! 6 line ends"}},
      {kHead + "COMMENTS=a\nb\r\n" + kGood.substr(kHead.size()), {"3! 1 line ends"}},
      {Wide(kGood), {"1! the file is UTF-16"}},
      {Wide(kGood).substr(2), {"1! bytes of 0"}},
      {kMark + kGood, {"1! the file begins with a byte order mark"}},
      {"", {"0! the file is empty", "0! no MODELNUMBER", "0! no device"}},
      {kLeft, {"4! the block \"X0100\" is left open"}},
      {kLeft + "START_HEX=X0100\r\n" + kRecord + kEnd, {"4! the block \"X0100\" is left open"}},
      {kHead, {"0! no device"}},
      {kGood + "END", {"7! what stands behind the last CR LF"}},
      {kGood + kSignature.substr(1), {"7! what stands behind the last CR LF"}},
      {Other(kGood, ":", " :"), {"5! a record with something in front"}},
      {Other(kGood, kRecord, kRecord + "\t" + kRecord8), {"6! a record with something in front"}},
      {Other(kGood, "MODELNUMBER=5", "MODELNUMBER=0"), {"2! the MODELNUMBER 0"}},
      {Other(kGood, "MODELNUMBER=5", "MODELNUMBER=5b"), {"2! MODELNUMBER \"5b\" is not all digits"}},
      {Other(kGood, "MODELNUMBER", "MODEL"), {"0! no MODELNUMBER", "2 the key \"MODEL\" is not known"}},
      {Other(kGood, " 16,", " 61,"), {"3! no mount has a device at the address \"61\""}},
      {Other(kGood, "a.qal", "b.qal"), {"1 FILENAME is \"b.qal\", the file's name is \"a.qal\""}},
      {Other(kGood, kRecord, kRecord + kRecord8),
       {"3 4 words inside the image of device 1 (M)", "first of them word 4:"}},
      {Other(kGood, kDevice, "HWREF=5\r\n" + kDevice), {"3 the key \"HWREF\" is not known"}},
      {Other(kGood, kDevice, "HWREV=5;6\r\n" + kDevice), {"3! HWREV \"5;6\" is no list"}},
      {Other(kGood, kDevice, "HWREV=5,\r\n" + kDevice), {"3! HWREV \"5,\" is no list"}},
      {Other(kGood, kDevice, "FILEVER=1.2\r\n" + kDevice), {"3 FILEVER \"1.2\" is not two digits"}},
      {Other(kGood, kDevice, "COMMENTS=f\xC3\xBCr\r\n" + kDevice), {"3 COMMENTS holds UTF-8"}},
      {kGood + "START_HEX=Y0100\r\n" + kRecord + "END_HEX=Y0100\r\n",
       {"7! no device above has the record id \"Y0100\""}},
      {kNoBlock + kRecord + kEnd, {"4! records outside of any block"}},
      {Other(kGood, "X0100", "boot"), {"3 the record id \"boot\" does not end in the four digits"}},
      {Other(kGood, kRecord, kRecord + kDevice + kRecord),
       {"6! another device above has the address", "6! the device is declared below"}},
      {Other(kGood, kRecord, ":080001000102030405060708D3\r\n"), {"5! the record begins at an odd address"}},
      {Other(kGood, kRecord, kRecord + ":0100080001F6\r\n"), {"6! the record has an odd number of bytes"}},
      {kLine + "\r\n" + kGood, {"1 the line is passed over, and no comment: \"xxx"}},
  };
  for (const auto& each : cases) {
    const std::string said = Said(each.text);
    EXPECT_EQ(said.empty(), each.said.empty()) << each.text.substr(0, 200) << said;
    std::size_t at = 0;
    for (const char* const what : each.said) {
      at = said.find(what, at);
      EXPECT_NE(at, said.npos) << what << " for\n" << each.text.substr(0, 200) << "\nsaid: " << said;
    }
    for (const std::size_t piece : {1, 3})
      EXPECT_EQ(Said(each.text, piece), said) << each.text.substr(0, 200);
  }
}

TEST(QalLint, SaysAHundredThingsAtMostAndThatThereIsMore) {
  std::string many = kGood;
  for (int i = 0; i < 200; ++i) many += "a=b\r\n";
  QALclass package;
  package.LoadQALfile({}, many + "b");
  const auto remarks = LintText(many + "b", "a.qal", package);
  ASSERT_EQ(remarks.size(), kMostRemarks);
  EXPECT_EQ(remarks.back().What, "there is more to say");
  EXPECT_TRUE(remarks.back().Harmful);
}

}  // namespace
}  // namespace tarnwick::test
