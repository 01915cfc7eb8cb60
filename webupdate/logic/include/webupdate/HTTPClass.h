// The program's HTTP client: a blocking request and its whole answer, as text or as bytes.
//
// It talks to the user itself: where there is no answer it shows why, and its caller gets nothing. An
// answer with a failure status, one that broke off and one over the limits of the transport
// (platform/http.h) are no answer. What the user gives up is told by no box. While a request runs, events are
// pumped: whoever starts one has locked out what must not start beside it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/http.h"
#include "webupdate/Answer.h"

namespace tarnwick {

class HTTPClass {
 public:
  HTTPClass() = default;
  HTTPClass(const HTTPClass&) = delete;
  HTTPClass& operator=(const HTTPClass&) = delete;

  /// Told the number of bytes received so far: after each piece, and once more at the end. May be empty.
  std::function<void(std::int32_t)> Progress;

  /// A field of the form that goes with each request, in order of first mention. Names that differ in
  /// case alone are one, under the first spelling.
  void Fields(const std::string& name, const std::string& value);
  /// Empty when there is no such field.
  std::string Fields(std::string_view name) const;

  /// Closes what is open, and takes `server`, always at port 80, as the one to ask. Nothing is sent yet.
  /// False, without a message, where this system cannot ask at all.
  bool OpenHTTP(const std::string& server, std::int32_t port = 80,
                const std::optional<std::string>& userName = {},
                const std::optional<std::string>& password = {});
  /// Safe when nothing is open.
  void CloseHTTP();

  /// Asks for `file`, a path that begins with "/", and gives the answer, or nothing. `method` becomes
  /// upper case. No referrer is ever sent. With `reload` no cache may answer. A page of the site that
  /// refuses the user is shown as that and gives nothing. Pumps events after each piece.
  std::string SendRequest(std::string file, std::string& method, const std::string& referer = {},
                          bool reload = false);
  /// The same for bytes, which are not looked at. Pumps no events by itself: the listener does.
  std::string SendRequestBinary(std::string file, std::string& method, const std::string& referer = {},
                                bool reload = false);

  /// Asks for a file of the site, which must answer itself. A web page in its place is told as a site that
  /// cannot be reached, and gives nothing.
  std::string SendRequestFile(const std::string& file);

  /// What the last request brought.
  AnswerKind LastAnswer() const { return mLast; }

  /// Tells the user that the site cannot be reached, as a request does that gets no answer.
  static void TellNoConnection();

  /// Each character but ASCII letters and digits as "%" and its low byte in two hexadecimal digits.
  static std::string URLEncode(std::u16string_view data);

 private:
  enum class Kind { Text, Binary };
  using Field = std::pair<std::string, std::string>;

  const Field* FindField(std::string_view name) const;
  std::string BuildFormData() const;
  std::string Ask(std::string file, std::string& method, bool reload, Kind kind);
  /// `what` is what is asked for, as the record tells it.
  std::string Answer(http::IRequest& request, Kind kind, const std::string& what);
  bool Receive(http::IRequest& request, std::string& answer, Kind kind);
  void Report(const std::string& answer, Kind kind) const;

  std::optional<http::Server> mServer;  ///< None while nothing is open.
  std::vector<Field> mFields;
  AnswerKind mLast = AnswerKind::None;
};

}  // namespace tarnwick
