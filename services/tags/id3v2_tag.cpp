#include "services/tags/id3v2_tag.h"

#include <commentsframe.h>
#include <id3v2framefactory.h>
#include <id3v2header.h>
#include <textidentificationframe.h>

#include <charconv>
#include <memory>
#include <optional>
#include <utility>

#include "services/tags/genres.h"
#include "services/tags/text.h"
#include "services/text/utf16.h"
#include "services/text/utf8.h"

// TagLib is given one plain frame at a time, all text in UTF-8. Of a whole tag it would inflate
// compressed frames without bound, and follow nested ones until the stack is full; and the handlers
// by which its reading of Latin-1 is changed are the process's, which is the player's.
namespace atdp::services {
namespace {

constexpr char kUtf8 = 3;
constexpr std::size_t kLanguageBytes = 3;

// The text after the encoding byte in UTF-8; none in an encoding that does not exist. What is
// stated to be UTF-8 may not be, as with ISO-8859-1.
std::optional<std::string> utf8Text(std::byte encoding, Bytes bytes) {
    switch (std::to_integer<int>(encoding)) {
        case 0:
        case 3:
            return fromUtf8OrWindows1252(charactersOf(bytes));
        case 1:
            return fromUtf16(bytes, std::endian::little);
        case 2:
            return fromUtf16(bytes, std::endian::big);
        default:
            return std::nullopt;
    }
}

bool isComment(const Id3v2Frame& frame) {
    return frame.identifier.starts_with("COM");
}

// The content of the frame with its text in UTF-8.
std::optional<std::string> utf8Content(const Id3v2Header& header, const Id3v2Frame& frame) {
    const std::size_t prefixBytes = isComment(frame) ? 1 + kLanguageBytes : 1;
    const Bytes content(frame.content);
    if (content.size() <= prefixBytes) return std::nullopt;
    auto text = utf8Text(content[0], content.subspan(prefixBytes));
    if (!text) return std::nullopt;
    // Only 2.4 has several values; before it a NUL ends the text, and anything may follow.
    if (!isComment(frame) && header.majorVersion < 4) *text = text->substr(0, text->find('\0'));
    const Bytes language = content.subspan(1, prefixBytes - 1);
    return kUtf8 + std::string(charactersOf(language)) + *text;
}

// TagLib loses the parts of a frame where memory runs out while it makes one: what it is about to
// take is tried first. Throws std::bad_alloc.
void tryMemoryForFrame(std::size_t contentBytes) {
    constexpr std::size_t kBytes = 4096;
    constexpr std::size_t kBytesPerByte = 32;  // wide characters, as a whole and in fields, twice
    const std::unique_ptr<std::byte[]> trial(new std::byte[kBytes + kBytesPerByte * contentBytes]);
}

// The frame as TagLib parses it. Frames with identifiers of four letters go as 2.3 even if they
// come from 2.4: that is where frames that 2.4 renamed get their new names, and writers of 2.4
// use the old ones too.
std::unique_ptr<TagLib::ID3v2::Frame> parsed(const std::string& identifier,
                                             const std::string& content) {
    tryMemoryForFrame(content.size());
    const bool isShort = identifier.size() == 3;
    std::string bytes = identifier;
    for (int shift = isShort ? 16 : 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(content.size() >> shift & 0xFF);
    if (!isShort) bytes += std::string(2, '\0');
    bytes += content;
    TagLib::ID3v2::Header header;
    header.setMajorVersion(isShort ? 2 : 3);
    return std::unique_ptr<TagLib::ID3v2::Frame>(
        TagLib::ID3v2::FrameFactory::instance()->createFrame(
            TagLib::ByteVector(bytes.data(), static_cast<unsigned>(bytes.size())),
            &std::as_const(header)));
}

std::string utf8Of(const TagLib::String& text) {
    const std::string whole = text.to8Bit(true);
    return whole.substr(0, whole.find('\0'));
}

// A genre's number and the two abbreviations as names.
std::string genreName(const std::string& genre) {
    if (genre == "RX") return "Remix";
    if (genre == "CR") return "Cover";
    int number = 0;
    const char* end = genre.data() + genre.size();
    const auto scanned = std::from_chars(genre.data(), end, number);
    if (scanned.ec != std::errc() || scanned.ptr != end) return genre;
    const std::string name = genreOfNumber(number);
    return name.empty() ? genre : name;
}

std::string joinedFields(const TagLib::ID3v2::TextIdentificationFrame& frame, bool areGenres) {
    std::string values;
    // A list that is not constant is copied before it is walked.
    const TagLib::StringList fields = frame.fieldList();
    for (const TagLib::String& field : fields) {
        const std::string value = utf8Of(field);
        values += (areGenres ? genreName(value) : value) + '\0';
    }
    return joinedValues(values);
}

void addFrame(Id3v2Tag& tag, const TagLib::ID3v2::Frame* frame) {
    using namespace TagLib::ID3v2;
    if (const auto* comment = dynamic_cast<const CommentsFrame*>(frame)) {
        tag.comments.emplace(utf8Of(comment->description()), utf8Of(comment->text()));
    } else if (const auto* text = dynamic_cast<const TextIdentificationFrame*>(frame)) {
        const TagLib::ByteVector name = text->frameID();
        const std::string identifier(name.data(), name.size());
        const std::string value = joinedFields(*text, identifier == "TCON");
        if (!value.empty()) tag.texts.emplace(identifier, value);
    }
}

}  // namespace

Id3v2Tag readId3v2Tag(const Id3v2Header& header, Bytes body) {
    Id3v2Tag tag;
    for (const Id3v2Frame& frame : readTextFrames(header, body))
        if (const auto content = utf8Content(header, frame))
            addFrame(tag, parsed(frame.identifier, *content).get());
    return tag;
}

}  // namespace atdp::services
