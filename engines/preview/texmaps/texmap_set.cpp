#include "engines/preview/texmaps/texmap_set.h"

#include "engines/preview/texmaps/texmap_compile.h"
#include "engines/preview/texmaps/texmap_eval.h"
#include "engines/preview/texmaps/texture_store.h"

#include <cmath>
#include <unordered_map>
#include <vector>

namespace preview {

namespace {

constexpr char kUnresolvedReference[] = "texmap reference to a missing map or a cycle of maps";

// Cuts every reference that closes a cycle, so that evaluation always ends. Depth-first over
// the maps in the order they came; an edge back into the current path is a cycle.
class CycleBreaker {
  public:
    explicit CycleBreaker(std::vector<TexMapNode>& nodes) : nodes_(nodes), marks_(nodes.size(), Mark::New) {}

    size_t run() {
        for (size_t i = 0; i < nodes_.size(); ++i)
            visit(i);
        return cut_;
    }

  private:
    enum class Mark { New, OnPath, Done };

    void visit(size_t start) {
        if (marks_[start] != Mark::New) return;
        // An explicit stack: chains of maps may be long.
        struct Frame {
            size_t node;
            std::vector<MapInput*> inputs;
            size_t next = 0;
        };
        std::vector<Frame> stack;
        marks_[start] = Mark::OnPath;
        stack.push_back({start, inputsOf(nodes_[start])});
        while (!stack.empty()) {
            Frame& top = stack.back();
            if (top.next == top.inputs.size()) {
                marks_[top.node] = Mark::Done;
                stack.pop_back();
                continue;
            }
            MapInput* in = top.inputs[top.next++];
            if (in->node < 0) continue;
            const size_t target = static_cast<size_t>(in->node);
            if (marks_[target] == Mark::OnPath) {
                in->node = -1;
                ++cut_;
            } else if (marks_[target] == Mark::New) {
                marks_[target] = Mark::OnPath;
                stack.push_back({target, inputsOf(nodes_[target])});
            }
        }
    }

    std::vector<TexMapNode>& nodes_;
    std::vector<Mark> marks_;
    size_t cut_ = 0;
};

} // namespace

struct TexMapSet::Impl {
    TextureStore textures;
    std::vector<TexMapNode> nodes;
    std::unordered_map<int32_t, int32_t> indexById;
    TexMapEvaluator evaluator{nodes, textures};

    int32_t indexOf(int32_t id) const {
        const auto found = indexById.find(id);
        return found == indexById.end() ? -1 : found->second;
    }
};

TexMapSet::TexMapSet() : impl_(std::make_unique<Impl>()) {}
TexMapSet::~TexMapSet() = default;

void TexMapSet::addFolder(const std::string& utf8Folder) { impl_->textures.addFolder(utf8Folder); }

void TexMapSet::addTextureFile(const TextureFileRecord& record, const WarningSink& warn) {
    impl_->textures.addFile(record, warn);
}

void TexMapSet::addTextureData(const TextureDataRecord& record, const WarningSink& warn) {
    impl_->textures.addData(record, warn);
}

void TexMapSet::add(const TexMapRecord& record, const WarningSink& warn) {
    TexMapNode node = compileTexMap(record, warn);
    const int32_t existing = impl_->indexOf(record.id);
    if (existing >= 0) {
        impl_->nodes[static_cast<size_t>(existing)] = std::move(node);
        return;
    }
    impl_->indexById[record.id] = static_cast<int32_t>(impl_->nodes.size());
    impl_->nodes.push_back(std::move(node));
}

void TexMapSet::finish(const WarningSink& warn) {
    bool unresolved = false;
    for (TexMapNode& node : impl_->nodes) {
        for (MapInput* in : inputsOf(node)) {
            in->node = in->mapId == -1 ? -1 : impl_->indexOf(in->mapId);
            if (in->mapId != -1 && in->node < 0) unresolved = true;
        }
    }
    if (CycleBreaker(impl_->nodes).run() > 0) unresolved = true;
    if (unresolved) warn(kUnresolvedReference);
}

Color TexMapSet::color(int32_t texMapId, const ShadingContext& at, Color fallback) const {
    if (texMapId == -1) return fallback;
    return impl_->evaluator.color(impl_->indexOf(texMapId), at, fallback);
}

float TexMapSet::scalar(int32_t texMapId, const ShadingContext& at, float fallback) const {
    if (texMapId == -1) return fallback;
    return average(impl_->evaluator.color(impl_->indexOf(texMapId), at, Color(fallback)));
}

Vec3 TexMapSet::normal(int32_t texMapId, const ShadingContext& at) const {
    if (texMapId == -1) return {0, 0, 1};
    return impl_->evaluator.normal(impl_->indexOf(texMapId), at);
}

Color TexMapSet::environment(int32_t texMapId, const Vec3& direction, Color fallback) const {
    if (texMapId == -1) return fallback;
    const Vec3 d = normalize(direction);
    const float u = 0.5f + std::atan2(d.x, -d.z) / (2 * kPi);
    const float v = 1 - std::acos(std::clamp(d.y, -1.0f, 1.0f)) / kPi;
    ShadingContext at;
    for (auto& channel : at.uv) {
        channel[0] = u;
        channel[1] = v;
    }
    at.position = d;
    at.geometricNormal = at.shadingNormal = -d;
    at.wo = -d;
    return impl_->evaluator.color(impl_->indexOf(texMapId), at, fallback);
}

} // namespace preview
