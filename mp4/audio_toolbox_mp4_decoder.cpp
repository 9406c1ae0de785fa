#include "mp4/audio_toolbox_mp4_decoder.h"

#include <algorithm>
#include <new>

#include "metadata/information_dictionary.h"
#include "mp4/atom_reader.h"
#include "mp4/m4a_record.h"
#include "platform/app_kit.h"
#include "platform/string_encoding.h"

namespace atdp {
namespace {

constexpr double kFirstReleaseThatReportsTags = 1138.0;
constexpr std::uint32_t kIndicatorBytes = 8;  // the indicator and the locale before a tag's value

NSStringEncoding encodingFor(std::uint32_t indicator) {
    switch (indicator) {
        case 1:
            return NSUTF8StringEncoding;
        case 2:
            return NSUTF16BigEndianStringEncoding;
        default:
            return NSISOLatin1StringEncoding;
    }
}

// The length is taken as signed: a negative one, of the value as well, gives no text. A value
// longer than the tag's data goes on in the fields behind it, up to the record's end.
std::optional<std::string> textOf(M4aTag<256>& tag, std::uint32_t indicator) {
    const std::uint32_t length = dGet4bytes(&tag.length);
    if (length < kIndicatorBytes || length > 0x7FFFFFFF) return std::nullopt;
    const auto value = recordFrom(tag.data + kIndicatorBytes);
    const std::size_t valueBytes = std::min<std::size_t>(length - kIndicatorBytes, value.size());
    return stringWithBytes(std::as_bytes(value.first(valueBytes)), encodingFor(indicator));
}

void addMissing(MetadataList& list, const char* key, M4aTag<256>& tag) {
    auto text = textOf(tag, dGet4bytes(tag.data));
    if (text && metadataValue(list, key) == nullptr) list.push_back({key, std::move(*text)});
}

// Hosts know two oddities of the album. Its encoding goes by the indicator of the track number. And
// it is added only where the list has one already, as a second one behind it.
void addAlbum(MetadataList& list) {
    if (m4a.alb.count == 0) return;
    auto text = textOf(m4a.alb, dGet4bytes(m4a.trkn.data));
    if (text && metadataValue(list, METADATA_COMMON_KEY_ALBUM) != nullptr)
        list.push_back({METADATA_COMMON_KEY_ALBUM, std::move(*text)});
}

// Hosts know the track as they know the album: added only as a second one.
void addTrack(MetadataList& list) {
    if (m4a.trkn.count == 0) return;
    const std::uint64_t track = wGet2bytes(m4a.trkn.data + kIndicatorBytes + 2);
    if (metadataValue(list, METADATA_COMMON_KEY_TRACK) != nullptr)
        list.push_back({METADATA_COMMON_KEY_TRACK, track});
}

}  // namespace

const DecoderClass& AudioToolboxMP4Decoder::decoderClass() {
    static constexpr DecoderClass kClass{
        "AudioToolboxMP4Decoder", &AudioToolboxWavDecoder::getScoreByPath,
        []() -> std::unique_ptr<SeekableFileDecoder> {
            return std::unique_ptr<SeekableFileDecoder>(new (std::nothrow) AudioToolboxMP4Decoder);
        }};
    return kClass;
}

std::unique_ptr<MetadataList> AudioToolboxMP4Decoder::getMetaData() {
    if (!opened_) return nullptr;
    try {
        auto list = std::make_unique<MetadataList>();
        addFileFormat(*list);
        getAudioFilePropertyInfo(file_id_, *list);
        if (NSAppKitVersionNumber < kFirstReleaseThatReportsTags) getM4AMetaDataFor10_6(*list);
        return list;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void AudioToolboxMP4Decoder::getM4AMetaDataFor10_6(MetadataList& list) const {
    const std::scoped_lock reading(atomReaderLock);  // until the record has been read
    if (iAnalizeM4aFile(*filepath_) != 0) return;
    if (dGet4bytes(&m4a.stsd.entryFormat) != kAudioFormatAppleLossless) return;
    addMissing(list, METADATA_COMMON_KEY_TITLE, m4a.nam);
    addMissing(list, METADATA_COMMON_KEY_ARTIST, m4a.ART);
    addAlbum(list);
    addTrack(list);
}

}  // namespace atdp
