// The HTTP transport: one request at a time to one server, answered piece by piece.
//
// The calls block, yet the window goes on painting while they wait; what the user does meanwhile stays
// pending until the caller pumps, unless that has put a `Waiting` in place. Text is bytes, handed on
// unchanged.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/seam.h"

namespace tarnwick::http {

/// The longest answer that a transport hands out, in bytes.
inline constexpr std::uint64_t kLargestAnswer = std::uint64_t{64} << 20;

/// A server, and who the user is there.
struct Server {
  std::string agent;  ///< The name under which the program asks.
  std::string name;   ///< Of the server, as in an address.
  std::uint16_t port = 80;
  std::string userName;  ///< With the password shown only to a server that asks for them; both may be empty.
  std::string password;
};

/// Why there is no whole answer.
enum class Failure {
  None,
  NoTransport,   ///< This system has no HTTP, or no memory for a request.
  NoName,        ///< Nobody knows the server's name.
  NoConnection,  ///< The server refused, or could not be reached.
  TooSlow,       ///< A limit of time was hit.
  BrokenOff,     ///< The answer, or the line, ended too early.
  TooLarge,      ///< A limit of size was hit.
  Packed,        ///< The answer is compressed, though nobody asked for that.
  GivenUp,       ///< By the user.
  Other,         ///< Anything else; the words say what.
};

/// A failure, and what the transport says of it, for a person to read.
struct Cause {
  Failure failure = Failure::None;
  std::string words;
};

/// One request and its answer; closed with its object.
class IRequest {
 public:
  virtual ~IRequest() = default;

  /// Sends the request, once. `headers` are lines divided by CR LF, `body` is sent with them; both may
  /// be empty. True when the server answered: `Status` is known then, and the answer can be read.
  virtual bool Send(std::string_view headers, std::string_view body) = 0;

  /// The status of the answer, as 200 or 404; 0 before one is known.
  virtual std::int32_t Status() const = 0;

  /// The length of the answer as the server told it. The answer can still turn out another.
  virtual std::optional<std::uint64_t> Length() const = 0;

  /// Fills `piece` from its begin with at most its size of the answer's next bytes. A `count` of 0 marks
  /// the end of a whole answer. False when the answer broke off or went over a limit.
  virtual bool Read(std::span<char> piece, std::size_t& count) = 0;

  /// Why `Send` or `Read` gave false.
  virtual Cause WhyNot() const = 0;
};

class ITransport {
 public:
  virtual ~ITransport() = default;

  /// Whether this system can ask at all; where it cannot, `cause` says why.
  virtual bool Ready(std::string& cause) = 0;

  /// `path` is the path on the server with any query, beginning with "/". With `reload` the server
  /// itself must answer, and no cache on the way. Nothing is sent yet. None on failure, and always where the
  /// transport is not ready.
  virtual std::unique_ptr<IRequest> OpenRequest(const Server& server, const std::string& method,
                                                const std::string& path, bool reload) = 0;
};

/// What is done while a transport waits, and whether the user has given up, for a caller that lets the user.
struct Waiting {
  std::function<void()> pump;
  std::function<bool()> isGivenUp;
};

/// What a transport does again and again while it waits: what `Seam<Waiting>` has, else windows are painted.
void Wait();
/// Whether the user has given up what is being fetched.
bool IsGivenUp();

/// Whether requests can be made by the transport that `Seam<ITransport>` has; where not, `cause` says why.
bool Ready(std::string& cause);

/// A request by that transport; none where it has none.
std::unique_ptr<IRequest> OpenRequest(const Server& server, const std::string& method,
                                      const std::string& path, bool reload);

}  // namespace tarnwick::http
