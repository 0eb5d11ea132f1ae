#include "core/vercel/VercelDecodingTree.h"

#include <QByteArrayView>
#include <charconv>
#include <cmath>
#include <cstring>

namespace {

constexpr int kQtMaxDepth = 1024; // Qt refuses a body nested deeper

// Forwards the parser's events to the document, refusing what Qt would read otherwise.
class QtAlikeHandler {
public:
    explicit QtAlikeHandler(rapidjson::Document& document) : document_(document) {}

    bool Null() { return document_.Null(); }
    bool Bool(bool b) { return document_.Bool(b); }
    // Numbers arrive as text (RawNumber); these are never called.
    bool Int(int) { return false; }
    bool Uint(unsigned) { return false; }
    bool Int64(int64_t) { return false; }
    bool Uint64(uint64_t) { return false; }
    bool Double(double) { return false; }

    bool RawNumber(const char* text, rapidjson::SizeType length, bool) {
        const char* end = text + length;
        qint64 integer = 0;
        const auto [at, error] = std::from_chars(text, end, integer);
        if (error == std::errc() && at == end)
            return document_.Int64(integer);
        // Qt's own conversion: the same rounding, and the same refusal of what overflows or
        // underflows. Integral values that fit 64 bits become integers, -0 included.
        bool ok = false;
        const double value = QByteArrayView(text, length).toDouble(&ok);
        if (!ok)
            return false;
        constexpr double limit = 9223372036854775808.0; // 2^63
        if (value >= -limit && value < limit && std::trunc(value) == value)
            return document_.Int64(static_cast<qint64>(value));
        return document_.Double(value);
    }

    bool String(const char* text, rapidjson::SizeType length, bool copy) {
        return !hasLoneSurrogate(text, length) && document_.String(text, length, copy);
    }
    bool Key(const char* text, rapidjson::SizeType length, bool copy) {
        return String(text, length, copy);
    }

    bool StartObject() { return ++depth_ <= kQtMaxDepth && document_.StartObject(); }
    bool EndObject(rapidjson::SizeType count) {
        --depth_;
        return document_.EndObject(count);
    }
    bool StartArray() { return ++depth_ <= kQtMaxDepth && document_.StartArray(); }
    bool EndArray(rapidjson::SizeType count) {
        --depth_;
        return document_.EndArray(count);
    }

private:
    // RapidJSON writes an escaped low surrogate without its high half (`\udc00`) as the three
    // bytes ED B0..BF xx, which are not UTF-8; Qt keeps it as one UTF-16 unit.
    static bool hasLoneSurrogate(const char* text, rapidjson::SizeType length) {
        const char* end = text + length;
        for (const char* at = text;
             (at = static_cast<const char*>(std::memchr(at, '\xed', std::size_t(end - at))));) {
            if (++at < end && static_cast<unsigned char>(*at) >= 0xa0)
                return true;
        }
        return false;
    }

    rapidjson::Document& document_;
    int depth_ = 0;
};

// RapidJSON takes the continuation bytes a UTF-8 lead byte announces before judging them, so a
// body cut inside a character would have it read past the end: as many '\0' as it can take.
constexpr qsizetype kPadding = 3;

constexpr unsigned kFlags = rapidjson::kParseInsituFlag | rapidjson::kParseIterativeFlag |
                            rapidjson::kParseValidateEncodingFlag |
                            rapidjson::kParseNumbersAsStringsFlag;

} // namespace

bool StrictJsonTree::parse(const QByteArray& body) {
    buffer_ = body + QByteArray(kPadding, '\0'); // a copy of our own
    rapidjson::InsituStringStream stream(buffer_.data());
    bool parsed = false;
    auto generate = [&](rapidjson::Document& document) {
        QtAlikeHandler handler(document);
        rapidjson::Reader reader;
        parsed = !reader.Parse<kFlags>(stream, handler).IsError();
        return parsed;
    };
    document_.Populate(generate);
    // A '\0' in the body ends RapidJSON's reading early; Qt reads on.
    return parsed && stream.Tell() == std::size_t(body.size());
}
