#include "core/AppState.h"

#include <string>
#include <utility>

namespace ombrel {

namespace {

// The first element with the id, else the first one.
template <class T>
T& findOrFirst(std::vector<T>& list, Uuid id) {
    T* found = findByID(list, id);
    return found ? *found : list.front();
}
template <class T>
const T& findOrFirst(const std::vector<T>& list, Uuid id) {
    const T* found = findByID(list, id);
    return found ? *found : list.front();
}

} // namespace

std::shared_ptr<AppState> AppState::make(Platform platform) {
    return std::shared_ptr<AppState>(new AppState(std::move(platform)));
}

AppState::AppState(Platform platform) : m_platform(std::move(platform)) {
    const Uuid id = Uuid::random();
    ragIndexes = {RAGIndex(id, defaultIndexName)};
    selectedRAGIndexID = id;
    setSelectedNavigatorItem({NavigatorSelection::Rag{id}});
    lastSnapshot = makeSnapshot();
}

AppState::IndexEdit::IndexEdit(AppState& state)
    : m_edit(state.ragIndexes.edit()), m_index(&findOrFirst(*m_edit, *state.selectedRAGIndexID)) {}

const RAGIndex& AppState::currentIndex() const {
    return findOrFirst(*ragIndexes, *selectedRAGIndexID);
}

const Variant& AppState::currentVariant() const {
    const RAGIndex& index = currentIndex();
    return findOrFirst(index.variants, index.selectedVariantID);
}

IndexedChunks AppState::indexedChunks() const {
    return currentIndex().indexedChunks();
}

bool AppState::hasEmbeddingsForAllChunks() const {
    return allHaveEmbeddings(indexedChunks());
}

const RAGIndex& AppState::addAndSelect(RAGIndex index) {
    auto selected = selectedRAGIndexID.edit();
    *selected = index.id;
    return addAndShow<NavigatorSelection::Rag>(ragIndexes, std::move(index));
}

const RAGIndex& AppState::addRAGIndex() {
    const std::string number = std::to_string(ragIndexes->size() + 1);
    return addAndSelect(RAGIndex(Uuid::random(), "New RAG " + number));
}

const RAGIndex* AppState::duplicateRAGIndex(Uuid id) {
    const RAGIndex* original = ragIndex(id);
    if (!original) {
        return nullptr;
    }
    RAGIndex copy = *original;
    copy.id = Uuid::random();
    copy.name += " copy";
    copy.forgetRunningWork();
    return &addAndSelect(std::move(copy));
}

void AppState::deleteRAGIndex(Uuid id) {
    if (ragIndexes->size() == 1) {
        return;
    }
    {
        auto indexes = ragIndexes.edit();
        auto selected = selectedRAGIndexID.edit();
        if (const RAGIndex* index = findByID(*indexes, id)) {
            indexes->erase(indexes->begin() + (index - indexes->data()));
        }
        if (*selected == id) {
            *selected = indexes->front().id;
        }
        if (selectedNavigatorItem() == NavigatorSelection{NavigatorSelection::Rag{id}}) {
            setSelectedNavigatorItem({NavigatorSelection::Rag{*selected}});
        }
    }
    scheduleCheckpoint();
}

void AppState::selectRAGIndex(Uuid id) {
    if (ragIndex(id)) {
        auto selected = selectedRAGIndexID.edit();
        *selected = id;
        setSelectedNavigatorItem({NavigatorSelection::Rag{id}});
    }
}

void AppState::renameRAGIndex(Uuid id, std::string name) {
    editFirst(ragIndexes, id, [&](RAGIndex& index) { index.name = std::move(name); });
}

void AppState::resetProject() {
    {
        auto indexes = ragIndexes.edit();
        auto selected = selectedRAGIndexID.edit();
        auto header = project.edit();
        *selected = Uuid::random();
        *indexes = {RAGIndex(*selected, defaultIndexName)};
        header->lastBuildFinishedAt = std::nullopt;
        header->lastBuiltDescription = Project().lastBuiltDescription;
        header->lastBuiltSettings = std::nullopt;
        if (std::holds_alternative<NavigatorSelection::Rag>(selectedNavigatorItem().value)) {
            setSelectedNavigatorItem({NavigatorSelection::Rag{*selected}});
        }
    }
    scheduleCheckpoint();
}

void AppState::updateVariant(const Variant& variant) {
    if (findByID(currentIndex().variants, variant.id)) {
        auto index = editCurrentIndex();
        *findByID(index->variants, variant.id) = variant;
    }
    scheduleCheckpoint();
}

void AppState::duplicateVariant() {
    {
        Variant copy;
        copy.id = Uuid::random();
        copy.name = currentVariant().name + " copy";
        copy.settings = currentVariant().settings;
        auto index = editCurrentIndex();
        index->selectedVariantID = copy.id;
        index->variants.push_back(std::move(copy));
    }
    scheduleCheckpoint();
}

} // namespace ombrel
