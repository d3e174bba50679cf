#pragma once

#include <algorithm>
#include <arpa/inet.h>
#include <cctype>
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <netinet/in.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace ombrel::test {

// An HTTP server on a free port of 127.0.0.1 that answers as a test says, byte by byte where it
// matters.
class ScriptedServer {
  public:
    struct Request {
        std::string method;
        std::string path;
        std::map<std::string, std::string> headers; // names in lower case
        std::string body;
    };

    // The server's end of a connection while it answers one request.
    class Connection {
      public:
        explicit Connection(int descriptor) : m_descriptor(descriptor) {}

        // False when the client has hung up.
        bool send(std::string_view bytes) {
            while (!bytes.empty()) {
                const auto sent = ::send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
                if (sent <= 0) {
                    return false;
                }
                bytes.remove_prefix(static_cast<std::size_t>(sent));
            }
            return true;
        }
        void answer(int status, std::string_view body,
                    std::string_view contentType = "application/json") {
            send("HTTP/1.1 " + std::to_string(status) + " Status\r\nContent-Type: " +
                 std::string(contentType) + "\r\nContent-Length: " + std::to_string(body.size()) +
                 "\r\n\r\n" + std::string(body));
        }
        // The head of an answer that ends with the connection.
        void beginStream() {
            send("HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\nConnection: close\r\n\r\n");
            m_isClosing = true;
        }
        // A whole stream of events and its end mark.
        void stream(const std::vector<std::string>& events) {
            beginStream();
            for (const auto& event : events) {
                send("data: " + event + "\n\n");
            }
            send("data: [DONE]\n\n");
        }
        // Answers no more requests on this connection.
        void close() { m_isClosing = true; }
        // Until the client hangs up, or the server goes.
        void waitForClient() {
            char byte = 0;
            while (recv(m_descriptor, &byte, 1, 0) > 0) {
            }
            m_isClosing = true;
        }
        bool isClosing() const { return m_isClosing; }

      private:
        int m_descriptor;
        bool m_isClosing = false;
    };

    // Called for each request, on a thread of the connection's own.
    using Script = std::function<void(const Request&, Connection&)>;

    explicit ScriptedServer(Script script) : m_script(std::move(script)) {
        m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (bind(m_listener, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            listen(m_listener, 16) != 0 ||
            getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
            std::abort();
        }
        m_port = ntohs(address.sin_port);
        m_acceptor = std::thread([this] { acceptAll(); });
    }
    ~ScriptedServer() {
        shutdown(m_listener, SHUT_RDWR);
        m_acceptor.join();
        close(m_listener);
        {
            const std::lock_guard lock(m_mutex);
            for (const int descriptor : m_descriptors) {
                shutdown(descriptor, SHUT_RDWR);
            }
        }
        for (auto& thread : m_threads) {
            thread.join();
        }
    }
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    int port() const { return m_port; }
    std::string url() const { return "http://127.0.0.1:" + std::to_string(m_port); }
    // What has come so far.
    std::vector<Request> requests() const {
        const std::lock_guard lock(m_mutex);
        return m_requests;
    }
    std::vector<Request> requests(std::string_view path) const {
        auto all = requests();
        std::erase_if(all, [path](const Request& each) { return each.path != path; });
        return all;
    }
    int connectionCount() const {
        const std::lock_guard lock(m_mutex);
        return m_connectionCount;
    }

  private:
    void acceptAll() {
        while (true) {
            const int descriptor = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
            if (descriptor < 0) {
                return;
            }
            const std::lock_guard lock(m_mutex);
            m_connectionCount++;
            m_descriptors.push_back(descriptor);
            m_threads.emplace_back([this, descriptor] { serve(descriptor); });
        }
    }

    void serve(int descriptor) {
        Connection connection(descriptor);
        std::string received;
        Request request;
        while (!connection.isClosing() && readRequest(descriptor, received, request)) {
            {
                const std::lock_guard lock(m_mutex);
                m_requests.push_back(request);
            }
            m_script(request, connection);
        }
        const std::lock_guard lock(m_mutex);
        std::erase(m_descriptors, descriptor);
        ::close(descriptor);
    }

    static bool readRequest(int descriptor, std::string& received, Request& request) {
        char buffer[4096];
        const auto readMore = [&] {
            const auto count = recv(descriptor, buffer, sizeof buffer, 0);
            if (count > 0) {
                received.append(buffer, static_cast<std::size_t>(count));
            }
            return count > 0;
        };
        std::size_t headEnd = 0;
        while ((headEnd = received.find("\r\n\r\n")) == std::string::npos) {
            if (!readMore()) {
                return false;
            }
        }
        request = Request();
        std::string_view head(received.data(), headEnd);
        const auto nextLine = [&head] {
            const auto end = std::min(head.find("\r\n"), head.size());
            const auto line = head.substr(0, end);
            head.remove_prefix(std::min(end + 2, head.size()));
            return line;
        };
        const auto first = nextLine();
        const auto space = first.find(' ');
        request.method = first.substr(0, space);
        request.path = first.substr(space + 1, first.rfind(' ') - space - 1);
        while (!head.empty()) {
            const auto line = nextLine();
            const auto colon = line.find(": ");
            std::string name(line.substr(0, colon));
            std::transform(name.begin(), name.end(), name.begin(), [](unsigned char character) {
                return static_cast<char>(std::tolower(character));
            });
            request.headers[name] = line.substr(std::min(colon + 2, line.size()));
        }
        const auto length = request.headers.find("content-length");
        const auto size =
            length == request.headers.end() ? 0 : std::stoul(std::string(length->second));
        received.erase(0, headEnd + 4);
        while (received.size() < size) {
            if (!readMore()) {
                return false;
            }
        }
        request.body = received.substr(0, size);
        received.erase(0, size);
        return true;
    }

    Script m_script;
    int m_listener = -1;
    int m_port = 0;
    mutable std::mutex m_mutex; // guards the next four
    std::vector<Request> m_requests;
    int m_connectionCount = 0;
    std::vector<int> m_descriptors;
    std::list<std::thread> m_threads;
    std::thread m_acceptor;
};

} // namespace ombrel::test
