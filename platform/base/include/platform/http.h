// The HTTP transport: one request at a time to one server, answered piece by piece.
//
// The calls block, yet the window goes on painting while they wait (`ui::PumpPainting`); what the user
// does meanwhile stays pending until the caller pumps. Text is bytes, handed on unchanged. Each object
// can be dropped at any time, also before the one that it came from.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tarnwick::http {

/// The longest answer that a transport hands out, in bytes.
inline constexpr std::uint64_t kLargestAnswer = std::uint64_t{64} << 20;

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
};

/// A server, and who the user is there. Nothing is sent before a request is.
class IConnection {
 public:
  virtual ~IConnection() = default;

  /// `path` is the path on the server with any query, beginning with "/". With `reload` the server
  /// itself must answer, and no cache on the way. None on failure.
  virtual std::unique_ptr<IRequest> OpenRequest(const std::string& method, const std::string& path,
                                                bool reload) = 0;
};

class ISession {
 public:
  virtual ~ISession() = default;

  /// The credentials are shown only to a server that asks for them. None on failure.
  virtual std::unique_ptr<IConnection> Connect(const std::string& server, std::uint16_t port,
                                               const std::string& userName, const std::string& password) = 0;
};

class ITransport {
 public:
  virtual ~ITransport() = default;

  /// `agent` is the name under which the program asks. None where there is no HTTP on this system.
  virtual std::unique_ptr<ISession> OpenSession(const std::string& agent) = 0;
};

/// Puts `transport` in place; it must outlive its use. Until then no session opens.
void Install(ITransport& transport);
void Uninstall();

std::unique_ptr<ISession> OpenSession(const std::string& agent);

}  // namespace tarnwick::http
