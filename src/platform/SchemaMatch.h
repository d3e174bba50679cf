#pragma once

#include "platform/GeneratedContent.h"
#include "platform/GenerationSchema.h"
#include "platform/Result.h"

#include <optional>
#include <string>
#include <string_view>

// Whether what a model wrote is what it was asked for.
namespace ombrel {

// Nothing when the content fits the schema: the types and choices are right and no required
// property is missing (properties beyond the declared ones may be there). Else what is wrong and
// where, as in `"items[2].price" is not a number`.
std::optional<std::string> whyNotFitting(const GeneratedContent& content,
                                         const DynamicGenerationSchema& schema);

// The value in a model's answer: the whole text, or the first JSON object or array in it that fits
// the schema, as between words or in a fenced block of code. Where the schema is a string or a
// choice the text itself will do. Fails with the reason as above, or when there is no JSON.
Result<GeneratedContent> contentInText(std::string_view text,
                                       const DynamicGenerationSchema& schema);

// The value in an answer that fits no better: the whole text when it is JSON, or the first JSON
// object in it, the first array where the schema is one. Nothing when there is no JSON.
std::optional<GeneratedContent> jsonInText(std::string_view text,
                                           const DynamicGenerationSchema& schema);

// The content without the optional properties that are null.
GeneratedContent withoutAbsent(GeneratedContent content, const DynamicGenerationSchema& schema);

} // namespace ombrel
