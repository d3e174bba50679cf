#pragma once

#include "platform/ByteSink.h"
#include "platform/JsonWriter.h"
#include "platform/Result.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <stop_token>
#include <string_view>

namespace ombrel {

// A file in the user's temporary folder that tells a tool what to do. Only the user can read it,
// since it may hold everything that a project knows. It is removed with this object.
class RequestFile {
  public:
    // Makes "PREFIX-UUID.json" of a record. Fails with a sentence that says why, also when it is
    // asked to stop before the end. Any thread.
    template <class Record>
    static Result<std::shared_ptr<const RequestFile>>
    make(std::string_view prefix, const Record& record, const std::stop_token& stop) {
        return makeOf(prefix, stop, [&record](const ByteSink& sink) {
            JsonWriter json(sink);
            const bool isWhole = encode(json, record);
            return json.finish() && isWhole;
        });
    }
    RequestFile(const RequestFile&) = delete;
    RequestFile& operator=(const RequestFile&) = delete;
    ~RequestFile();

    const std::filesystem::path& path() const { return m_path; }

  private:
    static Result<std::shared_ptr<const RequestFile>>
    makeOf(std::string_view prefix, const std::stop_token& stop,
           const std::function<bool(const ByteSink&)>& write);
    explicit RequestFile(std::filesystem::path path);

    std::filesystem::path m_path;
};

} // namespace ombrel
