#pragma once

#include "platform/Platform.h"
#include "tests/support/ScriptedEmbedder.h"
#include "tests/support/ScriptedEndpoints.h"
#include "tests/support/ScriptedModel.h"
#include "tests/support/ScriptedPdf.h"
#include "tests/support/ScriptedRecognizer.h"
#include "tests/support/TestExecutor.h"

#include <memory>

namespace ombrel::test {

// The scripted services, each under its own type, and the platform made of them.
struct TestPlatform {
    std::shared_ptr<TestExecutor> executor;
    std::shared_ptr<ScriptedModel> model;
    std::shared_ptr<ScriptedEmbedder> embedder;
    std::shared_ptr<ScriptedRecognizer> languages;
    std::shared_ptr<ScriptedPdf> pdf;
    std::shared_ptr<ScriptedEndpoints> endpoints;
    Platform platform;
};

inline TestPlatform makeTestPlatform() {
    TestPlatform made;
    made.executor = std::make_shared<TestExecutor>();
    made.model = std::make_shared<ScriptedModel>(made.executor);
    made.embedder = std::make_shared<ScriptedEmbedder>(made.executor);
    made.languages = std::make_shared<ScriptedRecognizer>();
    made.pdf = std::make_shared<ScriptedPdf>(made.executor);
    made.endpoints = std::make_shared<ScriptedEndpoints>();
    made.platform = {made.executor,  made.model, made.embedder,
                     made.languages, made.pdf,   made.endpoints};
    return made;
}

} // namespace ombrel::test
