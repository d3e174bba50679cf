#include "platform/GgufFile.h"

#include "platform/Text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <fstream>
#include <string_view>
#include <unordered_map>
#include <variant>

namespace ombrel {

static_assert(std::endian::native == std::endian::little, "the files are little-endian");

namespace {

// No model has more, and a damaged file must not take long.
constexpr std::uint64_t mostEntries = 65536;
constexpr std::uint64_t mostElements = std::uint64_t{1} << 24;
constexpr std::uint64_t longestKey = 65535;
// Of the values that are kept; longer ones, such as chat templates, are passed over.
constexpr std::uint64_t longestText = 4096;
constexpr std::uint64_t mostLanguages = 1024;

enum class Type : std::uint32_t {
    uint8,
    int8,
    uint16,
    int16,
    uint32,
    int32,
    float32,
    boolean,
    string,
    array,
    uint64,
    int64,
    float64,
};

// The bytes of a value of that type; 0 where they differ or there is no such type.
std::uint64_t sizeOf(Type type) {
    switch (type) {
    case Type::uint8:
    case Type::int8:
    case Type::boolean:
        return 1;
    case Type::uint16:
    case Type::int16:
        return 2;
    case Type::uint32:
    case Type::int32:
    case Type::float32:
        return 4;
    case Type::uint64:
    case Type::int64:
    case Type::float64:
        return 8;
    default:
        return 0;
    }
}

using Texts = std::vector<std::string>;
using Value = std::variant<std::monostate, std::int64_t, bool, std::string, Texts>;

// Reads front to back. After the first failure everything reads as zero.
class Reader {
  public:
    explicit Reader(const std::filesystem::path& path) : m_file(path, std::ios::binary) {
        std::error_code error;
        m_left = m_file ? std::filesystem::file_size(path, error) : 0;
        m_isGood = m_file && !error;
    }

    bool isGood() const { return m_isGood; }
    void fail() { m_isGood = false; }

    template <class Number>
    Number number() {
        std::array<char, sizeof(Number)> bytes{};
        take(bytes.data(), bytes.size());
        return std::bit_cast<Number>(bytes);
    }

    void skip(std::uint64_t count) {
        if (!claim(count)) {
            return;
        }
        const std::uint64_t buffered = std::min<std::uint64_t>(count, m_end - m_next);
        m_next += buffered;
        if (count > buffered &&
            !m_file.seekg(static_cast<std::streamoff>(count - buffered), std::ios::cur)) {
            fail();
        }
    }

    // Empty for one that is longer, which is passed over.
    std::string text(std::uint64_t longest) {
        const auto length = number<std::uint64_t>();
        if (length > longest) {
            skip(length);
            return {};
        }
        std::string result(isGood() ? length : 0, '\0');
        take(result.data(), result.size());
        return result;
    }

  private:
    bool claim(std::uint64_t count) {
        if (!m_isGood || count > m_left) {
            m_isGood = false;
            return false;
        }
        m_left -= count;
        return true;
    }
    void take(char* to, std::size_t count) {
        if (!claim(count)) {
            return;
        }
        while (count > 0) {
            if (m_next == m_end && !fill()) {
                return;
            }
            const std::size_t step = std::min(count, m_end - m_next);
            std::memcpy(to, m_buffer.data() + m_next, step);
            m_next += step;
            to += step;
            count -= step;
        }
    }
    bool fill() {
        m_file.read(m_buffer.data(), static_cast<std::streamsize>(m_buffer.size()));
        m_next = 0;
        m_end = static_cast<std::size_t>(m_file.gcount());
        if (m_end > 0 && m_file.eof()) {
            m_file.clear(); // It may be moved in still.
        }
        m_isGood = m_end > 0;
        return m_isGood;
    }

    std::ifstream m_file;
    std::uint64_t m_left = 0; // of the file behind what has been read
    bool m_isGood = false;
    std::vector<char> m_buffer = std::vector<char>(std::size_t{64} << 10);
    std::size_t m_next = 0; // of the bytes in the buffer
    std::size_t m_end = 0;
};

Value readArray(Reader& reader) {
    const auto type = static_cast<Type>(reader.number<std::uint32_t>());
    const auto count = reader.number<std::uint64_t>();
    if (count > mostElements) {
        reader.fail();
        return {};
    }
    if (type == Type::string) {
        Texts texts;
        for (std::uint64_t i = 0; i < count && reader.isGood(); i++) {
            const bool isKept = count <= mostLanguages;
            std::string text = reader.text(isKept ? longestText : 0);
            if (isKept) {
                texts.push_back(std::move(text));
            }
        }
        return texts;
    }
    if (sizeOf(type) == 0) {
        reader.fail(); // Arrays of arrays are allowed by the format but used by nobody.
        return {};
    }
    reader.skip(count * sizeOf(type));
    return {};
}

Value readValue(Reader& reader, Type type) {
    switch (type) {
    case Type::uint8:
        return std::int64_t{reader.number<std::uint8_t>()};
    case Type::int8:
        return std::int64_t{reader.number<std::int8_t>()};
    case Type::uint16:
        return std::int64_t{reader.number<std::uint16_t>()};
    case Type::int16:
        return std::int64_t{reader.number<std::int16_t>()};
    case Type::uint32:
        return std::int64_t{reader.number<std::uint32_t>()};
    case Type::int32:
        return std::int64_t{reader.number<std::int32_t>()};
    case Type::uint64:
        return static_cast<std::int64_t>(reader.number<std::uint64_t>());
    case Type::int64:
        return reader.number<std::int64_t>();
    case Type::boolean:
        return reader.number<std::uint8_t>() != 0;
    case Type::string:
        return reader.text(longestText);
    case Type::array:
        return readArray(reader);
    case Type::float32:
    case Type::float64:
        reader.skip(sizeOf(type));
        return {};
    }
    reader.fail();
    return {};
}

using Metadata = std::unordered_map<std::string, Value>;

template <class T>
std::optional<T> valueOf(const Metadata& metadata, const std::string& key) {
    const auto found = metadata.find(key);
    if (found == metadata.end()) {
        return std::nullopt;
    }
    const auto* value = std::get_if<T>(&found->second);
    return value ? std::optional<T>(*value) : std::nullopt;
}

} // namespace

Result<GgufFile> GgufFile::read(const std::filesystem::path& file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        return failure(file.string() + " is not a file.");
    }
    const std::string notAModel = file.string() + " is not a model file (GGUF).";
    Reader reader(file);
    if (reader.number<std::uint32_t>() != 0x46554747 || !reader.isGood()) { // "GGUF"
        return failure(notAModel);
    }
    const auto version = reader.number<std::uint32_t>();
    if (version != 2 && version != 3) {
        return failure(file.string() + " has version " + std::to_string(version) +
                       " of the model format (GGUF), and only 2 and 3 are known.");
    }
    reader.skip(sizeof(std::uint64_t)); // the number of tensors
    const auto count = reader.number<std::uint64_t>();
    Metadata metadata;
    for (std::uint64_t i = 0; i < count && reader.isGood(); i++) {
        std::string key = reader.text(longestKey);
        const auto type = static_cast<Type>(reader.number<std::uint32_t>());
        if (i >= mostEntries) {
            reader.fail();
        }
        Value value = readValue(reader, type);
        if (reader.isGood()) {
            metadata.emplace(std::move(key), std::move(value));
        }
    }
    if (!reader.isGood()) {
        return failure(file.string() + " is a damaged model file (GGUF).");
    }
    GgufFile result;
    result.architecture = valueOf<std::string>(metadata, "general.architecture").value_or("");
    result.name = repairUtf8(valueOf<std::string>(metadata, "general.name").value_or(""));
    result.type = valueOf<std::string>(metadata, "general.type").value_or("model");
    result.languages = valueOf<Texts>(metadata, "general.languages").value_or(Texts());
    const std::string prefix = result.architecture + ".";
    result.contextLength = std::clamp<std::int64_t>(
        valueOf<std::int64_t>(metadata, prefix + "context_length").value_or(0), 0,
        std::numeric_limits<std::int32_t>::max());
    result.pooling = valueOf<std::int64_t>(metadata, prefix + "pooling_type");
    result.isCausal = valueOf<bool>(metadata, prefix + "attention.causal").value_or(true);
    result.hasChatTemplate = metadata.contains("tokenizer.chat_template");
    result.part = valueOf<std::int64_t>(metadata, "split.no").value_or(0);
    return result;
}

bool GgufFile::isEmbeddingModel() const {
    constexpr std::int64_t lastPooling = 3; // none, mean, first, last; then rank, which is a score
    const bool pools = pooling && *pooling > 0 && *pooling <= lastPooling;
    const bool ranks = pooling && *pooling > lastPooling;
    return type == "model" && part == 0 && !ranks && (pools || !isCausal);
}

bool GgufFile::isLanguageModel() const {
    return type == "model" && part == 0 && isCausal && pooling.value_or(0) == 0 &&
           contextLength > 0;
}

} // namespace ombrel
