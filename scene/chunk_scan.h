// The opening that every typed reader shares: find the next chunk of its kind, step the scan's
// offset past it, check its version and fetch its body; and the same for a chunk that must
// directly follow a record. Statuses travel as return values only.
#pragma once
#include "scene/byte_span.h"
#include "scene/scene_file_reader.h"

// The chunk version that every record type but some lights is written with.
constexpr uint32_t kRecordChunkVersion = 100;

// The decoded body of the chunk whose header was read last. Owns the pool block.
class ChunkBody {
  public:
    ChunkBody() = default;
    ~ChunkBody() { reset(); }
    ChunkBody(ChunkBody&& other) noexcept : block(other.block), size(other.size) { other.release(); }
    ChunkBody(const ChunkBody&) = delete;
    ChunkBody& operator=(const ChunkBody&) = delete;

    SceneStatus fetch(SceneFileReader& reader);
    ByteSpan bytes() const { return ByteSpan{block, size}; }
    uint8_t* data() const { return static_cast<uint8_t*>(block); }
    // Hands the block over; the body is empty afterwards.
    void* release();
    void reset();

  private:
    void* block = nullptr;
    uint64_t size = 0;
};

// When a record's chunk version is held against the one its kind is written with.
enum class VersionCheck {
    // Before the body is fetched: a chunk of another version is SceneBadVersion, unread.
    BeforeBody,
    // By the reader, against `version`, once it has copied the record: an image's unknown
    // type is reported before a wrong version, and a light's version depends on its type.
    AfterRecord,
};

// A chunk as a typed reader opens it. `body` holds the decoded body when `status` is SceneOk
// and `found` is true; `found` is false only where a following chunk may be of another type.
struct RecordChunk {
    SceneStatus status = SceneOk;
    bool found = false;
    uint32_t version = 0;
    ChunkBody body;
};

// Opens the next chunk of `type` along the chain from `offset` (0: the first chunk), and
// leaves `offset` naming the link after it. SceneEndOfChunks when the chain ends first.
RecordChunk openRecord(SceneFileReader& reader, uint32_t type, uint64_t& offset, VersionCheck check);

// What a chunk of another type means where a following chunk should stand.
enum class Following {
    Required, // the record is broken: SceneInvalid
    Optional, // the record goes on without it: SceneOk, not found, and that chunk is passed over
};

// Opens the chunk that the record opened last links to, which must be of `type`; its version
// is checked right after its body is fetched, so that a body that cannot be read tells its
// own status. A link of 0 ends the chain here (SceneEndOfChunks): it never leads back to the
// first chunk. `offset` names the link after the chunk looked at.
RecordChunk openFollowing(SceneFileReader& reader, uint32_t type, Following rule, uint64_t& offset);

// The type in the first four bytes of an image record; 0, which no kind uses, when the body
// is too short to hold one.
inline int32_t recordTypeOf(ByteSpan body) {
    return body.holds(0, 4) ? body.i32(0) : 0;
}

// Sets `record` to its defaults and copies `body` over it up to the end of its type's image
// (a body shorter than that is copied as far as it goes). False, with `record` untouched, when
// `imageLength` knows no image for the body's type.
template <class Record, class Defaults>
bool copyImage(ByteSpan body, uint32_t (*imageLength)(int32_t), Record& record, Defaults setDefaults) {
    const uint32_t image = imageLength(recordTypeOf(body));
    if (image == 0) return false;
    setDefaults(record);
    body.overlay(&record, image);
    return true;
}
