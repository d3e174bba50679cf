#pragma once

#include "platform/MainExecutor.h"
#include "platform/Result.h"
#include "platform/Task.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// HTTP to servers on this machine, and nowhere else: a host that is not "localhost", 127.0.0.0/8 or
// ::1 is refused before anything is resolved, every socket's address is checked again when it is
// made, no proxy is used and no redirect followed.
namespace ombrel {

struct HttpRequest {
    std::string url; // http://
    // Sent by POST as "application/json" when there is one; without one the request is a GET.
    std::string body;
    // Sent as a bearer token unless empty.
    std::string key;
    // Gets the body of an answer with a status below 400 as it comes, instead of the response.
    // Main thread; never after the task of the request is gone.
    std::function<void(std::string_view bytes)> onBody;
    // The time to wait for the connection, for the next byte, and for everything.
    std::chrono::milliseconds connectLimit = std::chrono::seconds(5);
    std::chrono::milliseconds idleLimit = std::chrono::minutes(2);
    std::chrono::milliseconds totalLimit = std::chrono::hours(1);
    // More than this is an error.
    std::size_t bodyLimit = std::size_t{64} << 20;
};

struct HttpResponse {
    int status = 0;
    std::string contentType;
    std::string body;
};

struct HttpError {
    enum class Kind {
        notLocal,      // not an http address of this machine; nothing was tried
        cannotConnect, // nobody listens there
        timedOut,
        tooLarge,
        broken, // the connection ended, or what came is not HTTP
        cancelled,
    };
    Kind kind;
    // A sentence for the user that says what happened and to which address.
    std::string message;
    // Whether part of the answer had come.
    bool isPartial = false;
};

class HttpClient {
  public:
    explicit HttpClient(std::shared_ptr<MainExecutor> executor);
    // Requests that are under way end as cancelled.
    ~HttpClient();
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    // Sends a request and waits for the whole answer, whatever its status. Main thread. Destroying
    // the task, or a stop of the token, ends the request.
    Task<Result<HttpResponse, HttpError>> send(HttpRequest request, std::stop_token stop = {});

  private:
    class Worker;
    static Task<Result<HttpResponse, HttpError>> run(std::shared_ptr<MainExecutor> executor,
                                                     std::shared_ptr<Worker> worker,
                                                     HttpRequest request, std::stop_token stop);

    std::shared_ptr<MainExecutor> m_executor;
    std::shared_ptr<Worker> m_worker;
};

// Nothing when `url` is an http address of this machine, else the sentence that says why not.
// Resolves nothing.
std::optional<std::string> whyNotLocal(const std::string& url);

// Whether something listens at an address for which `whyNotLocal` has nothing to say. Blocks for a
// fraction of a second at most. Any thread.
bool isListening(const std::string& url);

// Makes a curl handle (CURL*) unable to reach anything but this machine.
void restrictToThisMachine(void* curl);

} // namespace ombrel
