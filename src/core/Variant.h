#pragma once

#include "core/BuildSettings.h"
#include "platform/Uuid.h"

#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// A named recipe that is compared with others.
struct Variant {
    Uuid id;
    std::string name;
    BuildSettings settings;
    std::optional<double> recallAt5;       // of the last evaluation
    std::optional<double> mrr;             // of the last evaluation
    std::vector<double> recordedLatencies; // seconds of past asks, the newest last

    static constexpr auto keys() {
        return std::tuple(required("id", &Variant::id), required("name", &Variant::name),
                          required("settings", &Variant::settings),
                          optional("recallAt5", &Variant::recallAt5),
                          optional("mrr", &Variant::mrr),
                          required("recordedLatencies", &Variant::recordedLatencies));
    }

    // The middle latency, of an even number the upper one; nothing when there are none.
    std::optional<double> medianLatency() const;
    // "Hybrid · Default".
    std::string summaryLabel() const;

    bool operator==(const Variant&) const = default;
};

} // namespace ombrel
