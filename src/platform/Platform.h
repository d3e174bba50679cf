#pragma once

#include <memory>

namespace ombrel {

class LanguageRecognizer;
class MainExecutor;
class ModelEndpoints;
class OnDeviceModel;
class PdfText;
class SentenceEmbedder;

// What the outside world does for a workspace. Handed to it at construction; tests hand in scripted
// services. None of the members is null.
struct Platform {
    std::shared_ptr<MainExecutor> executor;
    std::shared_ptr<OnDeviceModel> model;
    std::shared_ptr<SentenceEmbedder> embedder;
    std::shared_ptr<LanguageRecognizer> languages;
    std::shared_ptr<PdfText> pdf;
    std::shared_ptr<ModelEndpoints> endpoints;
};

} // namespace ombrel
