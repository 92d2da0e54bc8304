// The run of chunks that makes one model, the same rule for meshes, fur and sprites: parts
// chain while each says that more follow, a chunk of another type ends the run, and chunks
// of another layout version are passed over without a status.
#include "tests/scene/geometry/geometry_test_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace scene_writer;

namespace {

struct MeshKind {
    using Part = TRDF_Load::TriangleMesh;
    static constexpr uint32_t kType = kTriangleMesh;
    static Bytes body(const std::string& name, bool more) {
        MeshPlan plan;
        plan.name = name;
        plan.morePartsFollow = more;
        return meshBody(plan);
    }
    static SceneStatus read(SceneFileReader& reader, Part*& head, uint64_t& offset) {
        return readTriangleMesh(reader, head, offset);
    }
};

struct FurKind {
    using Part = TRDF_Load::FurMesh;
    static constexpr uint32_t kType = kFur;
    static Bytes body(const std::string& name, bool more) {
        CloudPlan plan;
        plan.name = name;
        plan.morePartsFollow = more;
        return furBody(plan);
    }
    static SceneStatus read(SceneFileReader& reader, Part*& head, uint64_t& offset) {
        return readFur(reader, head, offset);
    }
};

struct SpriteKind {
    using Part = TRDF_Load::SprMesh;
    static constexpr uint32_t kType = kSprites;
    static Bytes body(const std::string& name, bool more) {
        CloudPlan plan;
        plan.name = name;
        plan.morePartsFollow = more;
        return spriteBody(plan);
    }
    static SceneStatus read(SceneFileReader& reader, Part*& head, uint64_t& offset) {
        return readSprites(reader, head, offset);
    }
};

struct Scan {
    std::vector<std::vector<std::string>> models; // part names, model by model
    SceneStatus end = SceneOk;                     // the status that ended the scan
};

// Scans a file as the load driver does: one call per model while the result is SceneOk
// and the offset isn't 0, releasing each chain at once.
template <class Kind> Scan scanFile(const Bytes& file) {
    Scan scan;
    GeometryScene scene(file);
    EXPECT_EQ(scene.openStatus, SceneOk);
    uint64_t offset = 0;
    for (int calls = 0; calls < 32; ++calls) {
        Chain<typename Kind::Part> chain;
        scan.end = Kind::read(scene.reader, chain.head, offset);
        if (scan.end != SceneOk) {
            EXPECT_EQ(chain.head, nullptr);
            return scan;
        }
        std::vector<std::string> names;
        for (auto* part = chain.head; part; part = part->next) {
            std::string name;
            for (char16_t c : wideText(part->name, kNameChars))
                name.push_back(static_cast<char>(c));
            names.push_back(name);
        }
        scan.models.push_back(names);
        if (offset == 0) return scan;
    }
    ADD_FAILURE() << "the scan does not end";
    return scan;
}

using Models = std::vector<std::vector<std::string>>;

template <class Kind> class ModelRun : public ::testing::Test {
  protected:
    Chunk part(const std::string& name, bool more, uint32_t version = 100) {
        return storedChunk(Kind::kType, Kind::body(name, more), version);
    }
    Chunk packedPart(const std::string& name, bool more) { return zstdChunk(Kind::kType, Kind::body(name, more)); }
    Scan scan(std::initializer_list<Chunk> chunks) {
        LiveMemory before = liveMemory();
        Scan result = scanFile<Kind>(sceneOf(chunks));
        EXPECT_TRUE(liveMemory() == before) << "a read left blocks behind";
        return result;
    }
};

using Kinds = ::testing::Types<MeshKind, FurKind, SpriteKind>;
TYPED_TEST_SUITE(ModelRun, Kinds);

TYPED_TEST(ModelRun, FileWithoutTheTypeEndsTheScanAtOnce) {
    Scan scan = this->scan({otherChunk(), otherChunk()});
    EXPECT_EQ(scan.end, SceneEndOfChunks);
    EXPECT_TRUE(scan.models.empty());
}

TYPED_TEST(ModelRun, TwoChainedPartsThenAThirdStartsANewModel) {
    Scan scan = this->scan({this->part("a", true), this->part("b", false), this->part("c", false)});
    EXPECT_EQ(scan.models, (Models{{"a", "b"}, {"c"}}));
    EXPECT_EQ(scan.end, SceneOk); // the last model ended with the chain
}

TYPED_TEST(ModelRun, ModelsSeparatedByOtherChunks) {
    Scan scan = this->scan({otherChunk(), this->part("a", false), otherChunk(), this->part("b", true),
                            this->part("c", false), otherChunk()});
    EXPECT_EQ(scan.models, (Models{{"a"}, {"b", "c"}}));
    EXPECT_EQ(scan.end, SceneEndOfChunks);
}

TYPED_TEST(ModelRun, PartExpectingMoreFollowedByAnotherTypeEndsTheModelWell) {
    GeometryScene scene(sceneOf({this->part("a", true), otherChunk(), this->part("b", false)}));
    uint64_t offset = 0;
    Chain<typename TypeParam::Part> first;
    EXPECT_EQ(TypeParam::read(scene.reader, first.head, offset), SceneOk);
    EXPECT_EQ(first.length(), 1u);
    EXPECT_NE(offset, 0u);
    Chain<typename TypeParam::Part> second;
    EXPECT_EQ(TypeParam::read(scene.reader, second.head, offset), SceneOk);
    EXPECT_EQ(second.length(), 1u);
}

TYPED_TEST(ModelRun, PartExpectingMoreAtTheEndOfTheChain) {
    Scan scan = this->scan({this->part("a", true)});
    EXPECT_EQ(scan.models, (Models{{"a"}}));
}

TYPED_TEST(ModelRun, OtherVersionsArePassedOverWithoutStatus) {
    for (uint32_t version : {99u, 101u, 0u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(version);
        Scan alone = this->scan({this->part("old", false, version)});
        EXPECT_EQ(alone.end, SceneEndOfChunks);
        EXPECT_TRUE(alone.models.empty());

        // Inside a run the passed-over chunk neither ends the model nor joins it.
        Scan inside = this->scan({this->part("a", true), this->part("old", false, version), this->part("b", false)});
        EXPECT_EQ(inside.models, (Models{{"a", "b"}}));
    }
}

// A passed-over chunk counts as the start of a run, so the next chunk of another type ends
// that run with no part read, and the scan with it: a later model is not reached.
TYPED_TEST(ModelRun, PassedOverChunkThenAnotherTypeEndsTheScan) {
    Scan scan = this->scan({this->part("old", false, 99), otherChunk(), this->part("a", false)});
    EXPECT_EQ(scan.end, SceneEndOfChunks);
    EXPECT_TRUE(scan.models.empty());
}

TYPED_TEST(ModelRun, CompressedBodies) {
    Scan scan = this->scan({this->packedPart("a", true), this->packedPart("b", false), this->packedPart("c", false)});
    EXPECT_EQ(scan.models, (Models{{"a", "b"}, {"c"}}));
}

TYPED_TEST(ModelRun, PassEndedByEndOfChunksCanBeginAgain) {
    GeometryScene scene(sceneOf({this->part("a", false), otherChunk()}));
    for (int pass = 0; pass < 2; ++pass) {
        SCOPED_TRACE(pass);
        uint64_t offset = 0;
        Chain<typename TypeParam::Part> chain;
        EXPECT_EQ(TypeParam::read(scene.reader, chain.head, offset), SceneOk);
        EXPECT_EQ(chain.length(), 1u);
        EXPECT_NE(offset, 0u);
        chain.release();
        EXPECT_EQ(TypeParam::read(scene.reader, chain.head, offset), SceneEndOfChunks);
        EXPECT_EQ(chain.head, nullptr);
    }
}

TYPED_TEST(ModelRun, FailedReaderIsNotTouched) {
    GeometryScene scene(sceneOf({this->part("a", false)}));
    // A body said to run past the end of the file fails the reader for good.
    void* body = nullptr;
    ASSERT_EQ(scene.reader.readChunkBody(body, 16, 0, scene.reader.fileSize - 8), SceneIoError);
    uint64_t offset = 0;
    typename TypeParam::Part* head = nullptr;
    EXPECT_EQ(TypeParam::read(scene.reader, head, offset), SceneIoError);
    EXPECT_EQ(head, nullptr);
    EXPECT_EQ(offset, 0u);
}

} // namespace
