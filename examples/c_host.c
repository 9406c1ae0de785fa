/* A complete host in C: c_host FILE [FRAME] shows what is known of a sound file and decodes it,
 * from that frame on if one is given. */
#include <atdp.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>

static void print_entry(const atdp_entry* entry) {
    printf("%s: ", entry->key);
    switch (entry->kind) {
        case ATDP_TEXT:
            printf("%s\n", entry->text);
            break;
        case ATDP_INTEGER:
            printf("%" PRId64 "\n", entry->integer);
            break;
        case ATDP_UNSIGNED:
            printf("%" PRIu64 "\n", entry->unsigned_integer);
            break;
        case ATDP_REAL:
            printf("%.9g\n", (double)entry->real);
            break;
        default:
            printf("(of a kind that this program does not know)\n");
    }
}

static atdp_result print_facts(atdp_decoder* decoder, atdp_facts* facts) {
    atdp_entry entry = ATDP_ENTRY_INIT;
    uint32_t index = 0;
    atdp_result result = atdp_get_facts(decoder, facts);
    if (result != ATDP_OK) return result;
    printf("class: %s\n", atdp_decoder_class(decoder));
    printf("sampling rate: %.9g Hz\n", (double)facts->rate);
    printf("channels: %" PRId32 "\n", facts->channels);
    printf("duration: %" PRIu64 " ns\n", facts->duration);
    printf("bit rate: %" PRId32 " bytes per second\n", facts->bit_rate);
    printf("priming frames: %" PRId32 "\n", facts->priming_frames);
    printf("remainder frames: %" PRId32 "\n", facts->remainder_frames);
    while ((result = atdp_metadata_at(decoder, index++, &entry)) == ATDP_OK) print_entry(&entry);
    return result == ATDP_NO_ENTRY ? ATDP_OK : result;
}

/* Counts the frames to the end of the sound. */
static atdp_result decode(atdp_decoder* decoder, const atdp_facts* facts, uint64_t* total) {
    const uint32_t room = facts->preferred_frames + 1;
    float* samples = calloc((size_t)room * (size_t)facts->channels, sizeof(float));
    uint32_t frames = room;
    atdp_result result = samples != NULL ? ATDP_OK : ATDP_NO_MEMORY;
    while (result == ATDP_OK && frames == room) { /* fewer than asked for is the end */
        result = atdp_read(decoder, samples, &frames);
        *total += frames; /* a player plays them here */
    }
    free(samples);
    return result;
}

static atdp_result play(atdp_decoder* decoder, const char* path, const char* first_frame) {
    atdp_facts facts = ATDP_FACTS_INIT;
    uint64_t total = 0;
    atdp_result result = atdp_open(decoder, path, NULL);
    if (result == ATDP_OK) result = print_facts(decoder, &facts);
    if (result == ATDP_OK && first_frame != NULL)
        result = atdp_seek_frame(decoder, strtoull(first_frame, NULL, 10));
    if (result == ATDP_OK) result = decode(decoder, &facts, &total);
    if (result == ATDP_OK) printf("frames: %" PRIu64 "\n", total);
    return result;
}

int main(int argc, char** argv) {
    atdp_decoder* decoder = NULL;
    atdp_result result;
    if (argc != 2 && argc != 3) {
        fprintf(stderr, "usage: %s FILE [FRAME]\n", argv[0]);
        return 2;
    }
    /* What is inside the file decides about the decoder, not its name. */
    result = atdp_create_for_path(argv[1], &decoder);
    if (result == ATDP_OK) result = play(decoder, argv[1], argc == 3 ? argv[2] : NULL);
    atdp_destroy(decoder); /* closes it too */
    if (result == ATDP_OK) return 0;
    fprintf(stderr, "%s: %s\n", argv[1], atdp_result_text(result));
    return 1;
}
