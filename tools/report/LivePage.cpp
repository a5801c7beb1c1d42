// SPDX-License-Identifier: Apache-2.0
#include "report/LivePage.h"

#include <arpa/inet.h>
#include <httplib.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <random>
#include <system_error>
#include <thread>

#include "CommandError.h"
#include "recording/EventText.h"
#include "report/AppendedLines.h"
#include "report/EmbeddedRecording.h"
#include "report/MemberUnits.h"
#include "report/Page.h"

namespace {

constexpr const char* kHost = "127.0.0.1";
constexpr std::chrono::milliseconds kPause{50};

// 128 bits of the system's random numbers.
std::string RandomToken() {
  std::random_device random;
  std::string token;
  for (int i = 0; i < 4; ++i) {
    std::array<char, 9> part;
    std::snprintf(part.data(), part.size(), "%08x", static_cast<unsigned>(random()));
    token += part.data();
  }
  return token;
}

// Ends the connections that browsers have made to a port. The server's library does not say which they are.
void EndConnections(int port) {
  std::error_code error;
  std::filesystem::directory_iterator file("/proc/self/fd", error);
  for (; file != std::filesystem::directory_iterator(); file.increment(error)) {
    const int descriptor = std::stoi(file->path().filename().string());
    sockaddr_in own{};
    socklen_t size = sizeof own;
    if (::getsockname(descriptor, reinterpret_cast<sockaddr*>(&own), &size) != 0) continue;
    if (own.sin_family == AF_INET && ntohs(own.sin_port) == port) ::shutdown(descriptor, SHUT_RDWR);
  }
}

}  // namespace

class LivePage::Server {
 public:
  Server(const std::string& recording, int port) : m_recording(recording), m_token(RandomToken()) {
    m_server.set_socket_options([](socket_t) {});  // The library's own would share the port with others.
    m_server.set_keep_alive_max_count(1);          // An idle connection would delay the end.
    // Each browser has a thread for as long as it follows.
    m_server.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
    m_port = port != 0 ? (m_server.bind_to_port(kHost, port) ? port : -1) : m_server.bind_to_any_port(kHost);
    if (m_port < 0) throw CommandError("tessel: port " + std::to_string(port) + " cannot be used");
    m_server.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
      response.set_header("Cache-Control", "no-store");
      response.set_header("Referrer-Policy", "no-referrer");
      response.set_header("X-Content-Type-Options", "nosniff");
      if (mayAsk(request)) return httplib::Server::HandlerResponse::Unhandled;
      response.status = kForbidden;
      return httplib::Server::HandlerResponse::Handled;
    });
    m_server.Get("/", [this](const httplib::Request&, httplib::Response& response) {
      std::string page = std::string(PageBegin()) + MemberUnits();
      {
        const EmbeddedRecording itsName(page, 0, std::string(BaseName(m_recording)));
      }
      page += PageEnd();
      response.set_content(page, "text/html; charset=utf-8");
    });
    m_server.Get("/events",
                 [this](const httplib::Request&, httplib::Response& response) { follow(response); });
  }

  ~Server() {
    // The threads that follow see it within a pause. Nothing is read because of it: any order would do.
    m_isEnding = true;
    m_server.stop();
    if (!m_thread.joinable()) return;
    // A client that has not sent all of its request would be waited for; one may just have been accepted.
    while (!m_hasEnded) {
      EndConnections(m_port);
      std::this_thread::sleep_for(kPause / 10);
    }
    m_thread.join();
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  std::string Address() const {
    return "http://" + std::string(kHost) + ":" + std::to_string(m_port) + "/?token=" + m_token;
  }

  // Returns once the server listens: a stop before that would have no effect. A server that cannot accept
  // connections ends by itself.
  void Start() {
    m_thread = std::thread([this] {
      m_server.listen_after_bind();
      m_hasEnded = true;
    });
    while (!m_server.is_running()) {
      if (m_hasEnded) throw CommandError("tessel: port " + std::to_string(m_port) + " cannot be listened on");
      std::this_thread::sleep_for(kPause / 10);
    }
  }

 private:
  static constexpr std::size_t kThreads = 16;
  static constexpr int kForbidden = 403;

  // A page of another host cannot ask under its own name, and nobody without the token.
  bool mayAsk(const httplib::Request& request) const {
    const std::string host = request.get_header_value("Host");
    const std::string port = ":" + std::to_string(m_port);
    return (host == kHost + port || host == "localhost" + port) &&
           request.get_param_value("token") == m_token;
  }

  void follow(httplib::Response& response) {
    const auto lines = std::make_shared<AppendedLines>(m_recording);
    if (!lines->IsOpen()) {
      response.status = 404;
      return;
    }
    response.set_chunked_content_provider("text/event-stream",
                                          [this, lines](std::size_t, httplib::DataSink& sink) {
                                            const std::string event = lines->Next();
                                            if (!event.empty()) return sink.write(event.data(), event.size());
                                            if (m_isEnding) return false;
                                            std::this_thread::sleep_for(kPause);
                                            return sink.is_writable();
                                          });
  }

  const std::string m_recording;
  const std::string m_token;
  httplib::Server m_server;
  int m_port = 0;
  std::atomic<bool> m_isEnding{false};
  std::atomic<bool> m_hasEnded{false};  // Nothing is read because of it: any order would do.
  std::thread m_thread;
};

LivePage::LivePage(const std::string& recording, int port)
    : m_server(std::make_unique<Server>(recording, port)) {}

LivePage::~LivePage() = default;

std::string LivePage::Address() const {
  return m_server->Address();
}

void LivePage::Start() {
  m_server->Start();
}
