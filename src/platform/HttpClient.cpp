#include "platform/HttpClient.h"

#include "platform/Completion.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <curl/curl.h>
#include <mutex>
#include <netinet/in.h>
#include <strings.h>
#include <sys/socket.h>
#include <thread>
#include <utility>

namespace ombrel {

namespace {

using SteadyClock = std::chrono::steady_clock;

struct UrlDeleter {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
using Url = std::unique_ptr<CURLU, UrlDeleter>;

struct EasyDeleter {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
using Easy = std::unique_ptr<CURL, EasyDeleter>;

struct ListDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using HeaderList = std::unique_ptr<curl_slist, ListDeleter>;

std::string part(CURLU* url, CURLUPart which) {
    char* text = nullptr;
    if (curl_url_get(url, which, &text, 0) != CURLUE_OK) {
        return {};
    }
    std::string result = text;
    curl_free(text);
    return result;
}

bool isLoopback(const in_addr& address) {
    return ntohl(address.s_addr) >> 24 == 127;
}

bool isLoopback(const in6_addr& address) {
    return IN6_IS_ADDR_LOOPBACK(&address) != 0;
}

bool isLoopback(const sockaddr* address) {
    if (address->sa_family == AF_INET) {
        return isLoopback(reinterpret_cast<const sockaddr_in*>(address)->sin_addr);
    }
    if (address->sa_family == AF_INET6) {
        return isLoopback(reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr);
    }
    return address->sa_family == AF_UNIX;
}

// The host as curl's parser gives it: numbers in any notation are four decimal ones by then.
bool isLoopbackHost(std::string host) {
    if (strcasecmp(host.c_str(), "localhost") == 0) {
        return true; // Which curl resolves by itself, without asking a name server.
    }
    in_addr v4{};
    if (inet_pton(AF_INET, host.c_str(), &v4) == 1) {
        return isLoopback(v4);
    }
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
    }
    in6_addr v6{};
    return inet_pton(AF_INET6, host.c_str(), &v6) == 1 && isLoopback(v6);
}

curl_socket_t openLoopbackSocket(void*, curlsocktype, curl_sockaddr* address) {
    if (!isLoopback(&address->addr)) {
        return CURL_SOCKET_BAD;
    }
    return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

// An address that may be used, or why not.
Result<Url, std::string> localUrl(const std::string& text) {
    Url url(curl_url());
    // The length keeps a message readable. A NUL would end the text for curl alone.
    if (text.size() > 2048 || text.find('\0') != std::string::npos ||
        curl_url_set(url.get(), CURLUPART_URL, text.c_str(), 0) != CURLUE_OK) {
        return tl::unexpected("\"" + text.substr(0, 200) +
                              "\" is not an address such as http://localhost:11434.");
    }
    if (part(url.get(), CURLUPART_SCHEME) != "http") {
        return tl::unexpected("The address " + text +
                              " does not start with http://, which is how the studio talks to "
                              "servers on this computer.");
    }
    if (!isLoopbackHost(part(url.get(), CURLUPART_HOST))) {
        return tl::unexpected("The address " + text +
                              " is not on this computer. Nothing is sent to other machines: use "
                              "localhost, 127.0.0.1 or [::1].");
    }
    return url;
}

std::string seconds(std::chrono::milliseconds time) {
    const auto whole = time.count() / 1000;
    if (time.count() % 1000 != 0) {
        return std::to_string(time.count()) + " milliseconds";
    }
    return std::to_string(whole) + (whole == 1 ? " second" : " seconds");
}

void initializeCurl() {
    static const CURLcode done = curl_global_init(CURL_GLOBAL_DEFAULT);
    static_cast<void>(done);
}

} // namespace

std::optional<std::string> whyNotLocal(const std::string& url) {
    const auto parsed = localUrl(url);
    if (parsed) {
        return std::nullopt;
    }
    return parsed.error();
}

bool isListening(const std::string& url) {
    const auto parsed = localUrl(url);
    if (!parsed) {
        return false;
    }
    initializeCurl();
    const Easy easy(curl_easy_init());
    restrictToThisMachine(easy.get());
    curl_easy_setopt(easy.get(), CURLOPT_CURLU, parsed->get());
    curl_easy_setopt(easy.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy.get(), CURLOPT_CONNECT_ONLY, 1L);
    curl_easy_setopt(easy.get(), CURLOPT_TIMEOUT_MS, 500L);
    return curl_easy_perform(easy.get()) == CURLE_OK;
}

void restrictToThisMachine(void* curl) {
    CURL* easy = curl;
    curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, openLoopbackSocket);
    curl_easy_setopt(easy, CURLOPT_PROXY, "");
    curl_easy_setopt(easy, CURLOPT_NOPROXY, "*");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http");
}

namespace {

// A request and where it stands. What has no remark belongs to the worker's thread once started.
struct Transfer : std::enable_shared_from_this<Transfer> {
    HttpRequest request; // not changed after the start
    Url url;
    std::string address; // for messages
    std::weak_ptr<MainExecutor> executor;
    std::function<void(Result<HttpResponse, HttpError>)> finish;

    Easy easy;
    HeaderList headers;
    SteadyClock::time_point started;
    SteadyClock::time_point lastByte;
    std::size_t received = 0;
    HttpResponse response;
    bool isTooLarge = false;
    std::atomic<bool> isCancelled = false;

    bool isAbandoned = false; // main thread
    std::mutex mutex;         // guards the next two
    std::string undelivered;
    bool isDeliveryPosted = false;

    // Main thread.
    void deliver() {
        std::string bytes;
        {
            const std::lock_guard lock(mutex);
            bytes.swap(undelivered);
            isDeliveryPosted = false;
        }
        if (!isAbandoned && !bytes.empty()) {
            request.onBody(bytes);
        }
    }
};

std::size_t takeHeader(char*, std::size_t size, std::size_t count, void* user) {
    static_cast<Transfer*>(user)->lastByte = SteadyClock::now();
    return size * count;
}

} // namespace

class HttpClient::Worker {
  public:
    Worker() {
        initializeCurl();
        m_multi = curl_multi_init();
        m_thread = std::thread([this] { loop(); });
    }
    ~Worker() {
        stop();
        curl_multi_cleanup(m_multi);
    }

    void stop() {
        {
            const std::lock_guard lock(m_mutex);
            m_isStopping = true;
        }
        curl_multi_wakeup(m_multi);
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    void start(const std::shared_ptr<Transfer>& transfer) {
        {
            const std::lock_guard lock(m_mutex);
            if (!m_isStopping) {
                m_starting.push_back(transfer);
                curl_multi_wakeup(m_multi);
                return;
            }
        }
        finish(*transfer, HttpError::Kind::cancelled, "The request was cancelled.");
    }

    void cancel(Transfer& transfer) {
        transfer.isCancelled.store(true);
        curl_multi_wakeup(m_multi);
    }

  private:
    static void finish(Transfer& transfer, HttpError::Kind kind, std::string message) {
        const bool isPartial = transfer.received > 0;
        transfer.finish(tl::unexpected(HttpError{kind, std::move(message), isPartial}));
    }

    static std::size_t takeBody(char* bytes, std::size_t size, std::size_t count, void* user) {
        auto& transfer = *static_cast<Transfer*>(user);
        const std::string_view received(bytes, size * count);
        transfer.lastByte = SteadyClock::now();
        transfer.received += received.size();
        if (transfer.received > transfer.request.bodyLimit) {
            transfer.isTooLarge = true;
            return CURL_WRITEFUNC_ERROR;
        }
        long status = 0;
        curl_easy_getinfo(transfer.easy.get(), CURLINFO_RESPONSE_CODE, &status);
        if (!transfer.request.onBody || status >= 400) {
            transfer.response.body += received;
            return received.size();
        }
        {
            const std::lock_guard lock(transfer.mutex);
            transfer.undelivered += received;
            if (std::exchange(transfer.isDeliveryPosted, true)) {
                return received.size();
            }
        }
        if (const auto executor = transfer.executor.lock()) {
            executor->post([held = transfer.shared_from_this()] { held->deliver(); });
        }
        return received.size();
    }

    void begin(std::shared_ptr<Transfer> transfer) {
        transfer->easy.reset(curl_easy_init());
        CURL* easy = transfer->easy.get();
        const HttpRequest& request = transfer->request;
        restrictToThisMachine(easy);
        curl_easy_setopt(easy, CURLOPT_CURLU, transfer->url.get());
        curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS,
                         static_cast<long>(request.connectLimit.count()));
        curl_slist* headers = curl_slist_append(nullptr, "Expect:");
        if (!request.body.empty()) {
            headers = curl_slist_append(headers, "Content-Type: application/json");
            curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request.body.data());
            curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE,
                             static_cast<curl_off_t>(request.body.size()));
        }
        // A key with a line break would add headers of its own.
        if (!request.key.empty() && request.key.find_first_of("\r\n") == std::string::npos) {
            headers = curl_slist_append(headers, ("Authorization: Bearer " + request.key).c_str());
        }
        transfer->headers.reset(headers);
        curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);
        curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, takeHeader);
        curl_easy_setopt(easy, CURLOPT_HEADERDATA, transfer.get());
        curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, takeBody);
        transfer->started = transfer->lastByte = SteadyClock::now();
        curl_easy_setopt(easy, CURLOPT_WRITEDATA, transfer.get());
        m_running.push_back(std::move(transfer));
        curl_multi_add_handle(m_multi, easy);
    }

    // When the transfer has waited too long, unless something comes before.
    static SteadyClock::time_point deadline(const Transfer& transfer) {
        return std::min(transfer.started + transfer.request.totalLimit,
                        transfer.lastByte + transfer.request.idleLimit);
    }

    // Takes the transfer out of curl's hands.
    std::shared_ptr<Transfer> remove(CURL* easy) {
        const auto found =
            std::find_if(m_running.begin(), m_running.end(),
                         [easy](const auto& each) { return each->easy.get() == easy; });
        curl_multi_remove_handle(m_multi, easy);
        std::shared_ptr<Transfer> transfer = std::move(*found);
        m_running.erase(found);
        return transfer;
    }

    void end(CURL* easy, CURLcode code) {
        long status = 0;
        curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
        const char* contentType = nullptr;
        curl_easy_getinfo(easy, CURLINFO_CONTENT_TYPE, &contentType);
        const auto transfer = remove(easy);
        const std::string& address = transfer->address;
        switch (code) {
        case CURLE_OK:
            transfer->response.status = static_cast<int>(status);
            transfer->response.contentType = contentType ? contentType : "";
            transfer->finish(std::move(transfer->response));
            return;
        case CURLE_COULDNT_CONNECT:
        case CURLE_COULDNT_RESOLVE_HOST:
            finish(*transfer, HttpError::Kind::cannotConnect,
                   "No server answers at " + address + ".");
            return;
        case CURLE_OPERATION_TIMEDOUT:
            finish(*transfer, HttpError::Kind::timedOut,
                   "The server at " + address + " could not be connected to within " +
                       seconds(transfer->request.connectLimit) + ".");
            return;
        case CURLE_WRITE_ERROR:
            if (transfer->isTooLarge) {
                finish(*transfer, HttpError::Kind::tooLarge,
                       "The server at " + address + " answered with more than " +
                           std::to_string(transfer->request.bodyLimit) + " bytes.");
                return;
            }
            break;
        case CURLE_GOT_NOTHING:
        case CURLE_RECV_ERROR:
        case CURLE_SEND_ERROR:
        case CURLE_PARTIAL_FILE:
            finish(*transfer, HttpError::Kind::broken,
                   "The server at " + address +
                       (transfer->received > 0
                            ? " ended the connection in the middle of its answer."
                            : " ended the connection without an answer."));
            return;
        default:
            break;
        }
        finish(*transfer, HttpError::Kind::broken,
               "The server at " + address +
                   " answered in a way that is not HTTP: " + curl_easy_strerror(code) + ".");
    }

    // Ends what was cancelled or has waited too long; says how long nothing of that can happen.
    std::chrono::milliseconds endOverdue() {
        const auto now = SteadyClock::now();
        auto next = now + std::chrono::minutes(1);
        std::vector<CURL*> overdue;
        for (const auto& each : m_running) {
            if (each->isCancelled.load() || deadline(*each) <= now) {
                overdue.push_back(each->easy.get());
            } else {
                next = std::min(next, deadline(*each));
            }
        }
        for (CURL* easy : overdue) {
            const auto transfer = remove(easy);
            if (transfer->isCancelled.load()) {
                finish(*transfer, HttpError::Kind::cancelled, "The request was cancelled.");
                continue;
            }
            const bool isIdle = transfer->lastByte + transfer->request.idleLimit <= now;
            finish(*transfer, HttpError::Kind::timedOut,
                   "The server at " + transfer->address +
                       (isIdle ? " sent nothing for " + seconds(transfer->request.idleLimit)
                               : " did not finish its answer within " +
                                     seconds(transfer->request.totalLimit)) +
                       ".");
        }
        return std::chrono::ceil<std::chrono::milliseconds>(next - now);
    }

    void loop() {
        while (true) {
            std::vector<std::shared_ptr<Transfer>> starting;
            bool isStopping = false;
            {
                const std::lock_guard lock(m_mutex);
                starting.swap(m_starting);
                isStopping = m_isStopping;
            }
            for (auto& transfer : starting) {
                begin(std::move(transfer));
            }
            if (isStopping) {
                for (const auto& each : m_running) {
                    each->isCancelled.store(true);
                }
                endOverdue();
                return;
            }
            int runningCount = 0;
            curl_multi_perform(m_multi, &runningCount);
            int left = 0;
            while (const CURLMsg* message = curl_multi_info_read(m_multi, &left)) {
                if (message->msg == CURLMSG_DONE) {
                    end(message->easy_handle, message->data.result);
                }
            }
            const auto wait = endOverdue();
            curl_multi_poll(m_multi, nullptr, 0, static_cast<int>(wait.count()), nullptr);
        }
    }

    CURLM* m_multi = nullptr;
    std::mutex m_mutex; // guards the next two
    std::vector<std::shared_ptr<Transfer>> m_starting;
    bool m_isStopping = false;
    std::vector<std::shared_ptr<Transfer>> m_running; // the worker's thread only
    std::thread m_thread;
};

HttpClient::HttpClient(std::shared_ptr<MainExecutor> executor)
    : m_executor(std::move(executor)), m_worker(std::make_shared<Worker>()) {}

HttpClient::~HttpClient() {
    m_worker->stop();
}

Task<Result<HttpResponse, HttpError>> HttpClient::send(HttpRequest request, std::stop_token stop) {
    return run(m_executor, m_worker, std::move(request), std::move(stop));
}

Task<Result<HttpResponse, HttpError>> HttpClient::run(std::shared_ptr<MainExecutor> executor,
                                                      std::shared_ptr<Worker> worker,
                                                      HttpRequest request, std::stop_token stop) {
    auto url = localUrl(request.url);
    if (!url) {
        co_return tl::unexpected(HttpError{HttpError::Kind::notLocal, url.error()});
    }
    Completion<Result<HttpResponse, HttpError>> finished(executor);
    const auto transfer = std::make_shared<Transfer>();
    transfer->request = std::move(request);
    transfer->url = std::move(*url);
    transfer->address = "http://" + part(transfer->url.get(), CURLUPART_HOST);
    if (const auto port = part(transfer->url.get(), CURLUPART_PORT); !port.empty()) {
        transfer->address += ":" + port;
    }
    transfer->executor = executor;
    transfer->finish = finished.fulfiller();
    // Whoever destroys this task, or stops it, ends the request.
    struct Abandon {
        Worker& worker;
        Transfer& transfer;
        ~Abandon() {
            transfer.isAbandoned = true;
            worker.cancel(transfer);
        }
    };
    const Abandon abandon{*worker, *transfer};
    const std::stop_callback cancelOnStop(stop, [worker, transfer] { worker->cancel(*transfer); });
    worker->start(transfer);
    Result<HttpResponse, HttpError> result = co_await finished;
    // The answer can be complete before the last of its body has had its turn.
    transfer->deliver();
    co_return result;
}

} // namespace ombrel
