#include "korvane-runner/Bus/MessageBody.h"

#include "korvane-runner/Bus/Signature.h"
#include "korvane-runner/Bus/WireWriter.h"

namespace korvane::runner::bus {

namespace {

TextList readList(WireReader& reader) {
    TextList list;
    const auto end = reader.arrayEnd('s');
    while (reader.position() < end) list.emplace_back(reader.text());
    if (reader.position() != end) reader.fail("An array does not end with an element");
    return list;
}

TextPairs readPairs(WireReader& reader) {
    TextPairs pairs;
    const auto end = reader.arrayEnd('{');
    while (reader.position() < end) {
        reader.align(8);
        const auto key = reader.text();
        pairs.emplace_back(key, reader.text());
    }
    if (reader.position() != end) reader.fail("An array does not end with an element");
    return pairs;
}

std::optional<BodyValue> tryReadValue(WireReader& reader, std::string_view type) {
    if (type == "u") return reader.number();
    if (type == "s") return std::string(reader.text());
    if (type == "as") return readList(reader);
    if (type == "a{ss}") return readPairs(reader);
    return std::nullopt;
}

/// Writes a value of each type that there is.
struct ValueWriter {
    WireWriter& writer;

    void operator()(std::uint32_t number) const { writer.number(number); }
    void operator()(const std::string& text) const { writer.text(text); }
    void operator()(const TextList& list) const {
        const auto array = writer.beginArray('s');
        for (const auto& text : list) writer.text(text);
        writer.endArray(array);
    }
    void operator()(const TextPairs& pairs) const {
        const auto array = writer.beginArray('{');
        for (const auto& [key, value] : pairs) {
            writer.align(8);
            writer.text(key);
            writer.text(value);
        }
        writer.endArray(array);
    }
};

/// An entry of a dictionary of variants, by where it stands in the body.
struct Entry {
    std::string_view key;
    std::string_view type; ///< of the value
    std::size_t begin;     ///< a multiple of 8
    std::size_t value;
    std::size_t end;
};

/// Absent where the next entry is none.
std::optional<Entry> tryReadEntry(WireReader& reader) {
    reader.align(8);
    Entry entry{};
    entry.begin = reader.position();
    entry.key = reader.text();
    entry.type = reader.signature();
    if (reader.hasFailed() || !isSingleType(entry.type)) return std::nullopt;
    reader.align(alignmentOf(entry.type.front()));
    entry.value = reader.position();
    reader.skip(entry.type);
    entry.end = reader.position();
    return entry;
}

/// Whether the whole body is a dictionary of variants, each entry of which `visit` is shown before.
template <class Visit>
bool visitEntries(ByteOrder order, std::string_view body, const Visit& visit) {
    WireReader reader(order, body);
    const auto end = reader.arrayEnd('{');
    while (reader.position() < end) {
        const auto entry = tryReadEntry(reader);
        if (!entry) return false;
        visit(*entry);
    }
    return !reader.hasFailed() && reader.position() == end && reader.isAtEnd();
}

} // namespace

std::optional<std::vector<BodyValue>> tryReadBody(ByteOrder order, std::string_view signature,
                                                  std::string_view body) {
    if (!isSignature(signature)) return std::nullopt;
    WireReader reader(order, body);
    std::vector<BodyValue> values;
    while (!signature.empty()) {
        const auto length = firstTypeLength(signature);
        auto value = tryReadValue(reader, signature.substr(0, length));
        if (!value || reader.hasFailed()) return std::nullopt;
        values.push_back(std::move(*value));
        signature.remove_prefix(length);
    }
    if (!reader.isAtEnd()) return std::nullopt;
    return values;
}

std::string writtenBody(ByteOrder order, const std::vector<BodyValue>& values) {
    WireWriter writer(order);
    for (const auto& value : values) std::visit(ValueWriter{writer}, value);
    return writer.take();
}

std::optional<std::string> tryExchangeNumber(ByteOrder order, std::string_view body,
                                             std::string_view key, std::uint32_t number) {
    std::optional<std::size_t> position;
    const bool isRight = visitEntries(order, body, [&](const Entry& entry) {
        if (entry.key == key && entry.type == "u") position = entry.value;
    });
    if (!isRight || !position) return std::nullopt;
    WireWriter value(order);
    value.number(number);
    std::string exchanged(body);
    exchanged.replace(*position, value.bytes().size(), value.bytes());
    return exchanged;
}

std::optional<std::string> tryLeaveOut(ByteOrder order, std::string_view body,
                                       std::string_view key) {
    WireWriter writer(order);
    const auto array = writer.beginArray('{');
    bool isLeftOut = false;
    const bool isRight = visitEntries(order, body, [&](const Entry& entry) {
        if (entry.key == key) {
            isLeftOut = true;
            return;
        }
        writer.align(8);
        writer.raw(body.substr(entry.begin, entry.end - entry.begin));
    });
    if (!isRight || !isLeftOut) return std::nullopt;
    writer.endArray(array);
    return writer.take();
}

} // namespace korvane::runner::bus
