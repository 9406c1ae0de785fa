/* The decoders of AudioToolboxDecoderPlugin as a C library, libatdp.
 *
 *     atdp_decoder *decoder;
 *     if (atdp_create_for_path("song.mp3", &decoder) == ATDP_OK) {
 *         if (atdp_open(decoder, "song.mp3", NULL) == ATDP_OK) { ... atdp_read ... }
 *         atdp_destroy(decoder);
 *     }
 *
 * Units. Time is in nanoseconds, computed in single precision from frames and rate, so a second of
 * 44,100 Hz sound reads 999,999,936. Samples are interleaved 32-bit floats in native byte order;
 * full scale is -1 to 1. A frame is one sample per channel.
 *
 * Threads. Calls on one decoder come from one thread at a time. Different decoders, and the calls
 * that take none, may be used on any threads at once.
 *
 * Failures. A call answers a result code, or null where it answers text. A null pointer where one
 * is needed is ATDP_INVALID and changes nothing but a count that is answered, which becomes 0. What
 * else went wrong, such as a missing file, stands in the log.
 *
 * Structures that callers make start with their own size, so that they can grow. A caller sets it
 * to sizeof, as the INIT macros do. A smaller size than the first header had, or one above 4096, is
 * ATDP_INVALID, and so are options of a later header that this library does not know, unless they
 * are 0.
 */
#ifndef ATDP_H
#define ATDP_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define ATDP_API __attribute__((visibility("default")))
#else
#define ATDP_API
#endif

/* What a C++ compiler may know besides: nothing throws. */
#ifdef __cplusplus
#define ATDP_NOEXCEPT noexcept
extern "C" {
#else
#define ATDP_NOEXCEPT
#endif

/* The number of the interface that this header describes; it grows with every addition. */
#define ATDP_INTERFACE_VERSION 1

typedef enum atdp_result {
    ATDP_OK = 0,
    ATDP_INVALID = -1,        /* a null pointer, a wrong size or a value that nothing accepts */
    ATDP_WRONG_STATE = -2,    /* no file is open; or, when opening, one is already */
    ATDP_NO_MEMORY = -3,      /* memory ran out */
    ATDP_NO_DECODER = -4,     /* no class of that name, or none for what is inside the file */
    ATDP_NO_ENTRY = -5,       /* the list has no entry of that index */
    ATDP_FAILED = -25291,     /* the file cannot be opened, the seek or the setting was refused */
    ATDP_READ_FAILED = -26275 /* decoding failed */
} atdp_result;

/* The result in English words, static; "unknown result" for other numbers. Never null. */
ATDP_API const char* atdp_result_text(atdp_result result) ATDP_NOEXCEPT;

/* The version of the library, such as "0.1.0", static. */
ATDP_API const char* atdp_version(void) ATDP_NOEXCEPT;

/* The ATDP_INTERFACE_VERSION that the library was built with. */
ATDP_API uint32_t atdp_interface_version(void) ATDP_NOEXCEPT;

/* ---- The log ---- */

/* Receives each line, UTF-8 without a line end, valid during the call. It may be called on any
 * thread that uses this library, and must not call it back. */
typedef void (*atdp_log_sink)(const char* line, void* context);

/* Sends the log to `sink` from now on, or back to standard error when it is null. To be called
 * while no other call runs. */
ATDP_API void atdp_set_log_sink(atdp_log_sink sink, void* context) ATDP_NOEXCEPT;

/* ---- Facts by key: what the plug-in says of itself, and what a file says ---- */

typedef enum atdp_kind {
    ATDP_TEXT = 1,
    ATDP_INTEGER = 2,
    ATDP_UNSIGNED = 3,
    ATDP_REAL = 4
} atdp_kind;

/* One fact. Only the value that `kind` names is set; the others are 0. */
typedef struct atdp_entry {
    size_t size;
    const char* key;  /* UTF-8 */
    const char* text; /* UTF-8; a list of texts has a comma between them */
    int64_t integer;
    uint64_t unsigned_integer;
    float real;
    int32_t kind; /* an atdp_kind; later libraries may have more */
} atdp_entry;

#define ATDP_ENTRY_INIT \
    { sizeof(atdp_entry), 0, 0, 0, 0, 0, 0 }

/* Fact `index`, from 0, of the plug-in's descriptor: its name, the suffixes of file names ("exts")
 * and so on, always in the same order. Its texts are static. ATDP_OK, ATDP_NO_ENTRY behind the
 * last, ATDP_INVALID or ATDP_NO_MEMORY; unless ATDP_OK, `*entry` stays as it was. */
ATDP_API atdp_result atdp_property_at(uint32_t index, atdp_entry* entry) ATDP_NOEXCEPT;

/* ---- Decoders ---- */

/* A decoder. One takes one file after the other; each is to be closed before the next. */
typedef struct atdp_decoder atdp_decoder;

/* The name of the class that decodes the file, static: "AudioToolboxWavDecoder",
 * "AudioToolboxMP3Decoder" or "AudioToolboxMP4Decoder". It goes by what is inside the file, never
 * by its name. `path` is bytes, passed on unchanged. Null when no class does, the file cannot be
 * read or memory runs out. */
ATDP_API const char* atdp_class_for_path(const char* path) ATDP_NOEXCEPT;

/* Makes a decoder of the class of that name. `*decoder` is the caller's, to be given to
 * atdp_destroy; null unless ATDP_OK. ATDP_NO_DECODER, ATDP_NO_MEMORY or ATDP_INVALID. */
ATDP_API atdp_result atdp_create(const char* class_name, atdp_decoder** decoder) ATDP_NOEXCEPT;

/* The same, of the class that atdp_class_for_path answers. It does not open the file. */
ATDP_API atdp_result atdp_create_for_path(const char* path, atdp_decoder** decoder) ATDP_NOEXCEPT;

/* Closes and frees the decoder and whatever it owns. Null is left alone. */
ATDP_API void atdp_destroy(atdp_decoder* decoder) ATDP_NOEXCEPT;

/* The name of the decoder's class, static; null for a null decoder. */
ATDP_API const char* atdp_decoder_class(const atdp_decoder* decoder) ATDP_NOEXCEPT;

typedef struct atdp_options {
    size_t size;
    /* Level in decibels relative to full scale, such as -60, below which leading and trailing sound
     * counts as silence and is cut from MPEG files; known gapless counts win over it. 0 is off. */
    double mp3_threshold_db;
} atdp_options;

#define ATDP_OPTIONS_INIT \
    { sizeof(atdp_options), 0 }

/* Opens the file. `path` is bytes, passed on unchanged; `options` may be null. ATDP_OK; ATDP_FAILED
 * or, where opening decodes, ATDP_READ_FAILED; ATDP_WRONG_STATE, ATDP_NO_MEMORY or ATDP_INVALID,
 * also for a threshold that is no finite number in a float's range. Unless ATDP_OK, nothing is
 * open (with ATDP_WRONG_STATE: the file that was open still is). */
ATDP_API atdp_result atdp_open(atdp_decoder* decoder, const char* path,
                               const atdp_options* options) ATDP_NOEXCEPT;

/* Closes the file and frees what was held for it. ATDP_OK, also when none is open. */
ATDP_API atdp_result atdp_close(atdp_decoder* decoder) ATDP_NOEXCEPT;

/* What is known of the open file and of what is delivered. */
typedef struct atdp_facts {
    size_t size;
    uint64_t duration;  /* nanoseconds */
    uint64_t timestamp; /* where the last delivery or seek ended, nanoseconds */
    float rate;         /* Hz, of the samples delivered */
    int32_t channels;   /* of the samples delivered */
    int32_t bits;       /* of a sample delivered: 32 */
    uint32_t format;    /* of the samples delivered: the characters 'lpcm', first one highest */
    int32_t bit_rate;   /* bytes a second of the file's own uncompressed samples; 0 for
                           compressed files */
    uint32_t preferred_frames; /* frames that a read delivers best */
    int32_t priming_frames;    /* encoder delay at the start, frames */
    int32_t remainder_frames;  /* padding at the end, frames */
} atdp_facts;

#define ATDP_FACTS_INIT \
    { sizeof(atdp_facts), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0 }

/* Fills `*facts`; what this library does not know of a larger structure becomes 0. ATDP_OK,
 * ATDP_WRONG_STATE or ATDP_INVALID; unless ATDP_OK, `*facts` stays as it was. */
ATDP_API atdp_result atdp_get_facts(atdp_decoder* decoder, atdp_facts* facts) ATDP_NOEXCEPT;

/* How many facts atdp_metadata_at has. ATDP_OK, ATDP_WRONG_STATE, ATDP_NO_MEMORY or ATDP_INVALID;
 * unless ATDP_OK, `*count` is 0. */
ATDP_API atdp_result atdp_metadata_count(atdp_decoder* decoder, uint32_t* count) ATDP_NOEXCEPT;

/* Fact `index`, from 0, of what the open file says of itself: title, artist, its own rate and so
 * on. The list is read once; its texts are the decoder's, valid until the file is closed. ATDP_OK,
 * ATDP_NO_ENTRY behind the last, ATDP_WRONG_STATE, ATDP_NO_MEMORY or ATDP_INVALID; unless ATDP_OK,
 * `*entry` stays as it was. */
ATDP_API atdp_result atdp_metadata_at(atdp_decoder* decoder, uint32_t index,
                                      atdp_entry* entry) ATDP_NOEXCEPT;

/* Delivers the next frames. `*frames` is the room at `samples` before the call, in frames, and what
 * was delivered after it. Fewer than asked for, down to 0, with ATDP_OK is the end of the sound;
 * with ATDP_READ_FAILED they are the frames before the failure. Otherwise `*frames` becomes 0:
 * ATDP_WRONG_STATE, ATDP_NO_MEMORY, or ATDP_INVALID, also for a room of 2^32 samples and more. */
ATDP_API atdp_result atdp_read(atdp_decoder* decoder, float* samples,
                               uint32_t* frames) ATDP_NOEXCEPT;

/* Moves to a time as the plug-in does, to frame
 *     (uint64_t) ((float) nanoseconds * rate / 1000000000.0F)
 * with all arithmetic in single precision: minutes into a file that is some frames beside the time.
 * ATDP_OK, also past the end, where the next read delivers nothing; ATDP_FAILED, which leaves the
 * position as it was; ATDP_WRONG_STATE or ATDP_INVALID. In the last second of an MPEG file the
 * decoder repeats frames after such a seek; atdp_seek_frame does not. */
ATDP_API atdp_result atdp_seek(atdp_decoder* decoder, uint64_t nanoseconds) ATDP_NOEXCEPT;

/* Makes this frame the next one delivered, counted from the start of the sound at the rate of
 * delivery. Past the end the next read delivers nothing. It may decode some seconds of sound
 * before the frame. As atdp_seek, and ATDP_READ_FAILED or ATDP_NO_MEMORY, which leave the position
 * somewhere before the frame. */
ATDP_API atdp_result atdp_seek_frame(atdp_decoder* decoder, uint64_t frame) ATDP_NOEXCEPT;

/* Change what is delivered: the rate in Hz (1,000 to 768,000, or the file's own), the number of
 * channels (1 to 64), the bits of a sample (32 alone). A change of rate goes back to the start, one
 * of channels keeps the position. ATDP_OK; ATDP_FAILED, which leaves everything as it was;
 * ATDP_WRONG_STATE or ATDP_INVALID. */
ATDP_API atdp_result atdp_set_rate(atdp_decoder* decoder, float rate) ATDP_NOEXCEPT;
ATDP_API atdp_result atdp_set_channels(atdp_decoder* decoder, int32_t channels) ATDP_NOEXCEPT;
ATDP_API atdp_result atdp_set_bits(atdp_decoder* decoder, int32_t bits) ATDP_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
