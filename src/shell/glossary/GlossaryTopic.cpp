#include "shell/glossary/GlossaryTopic.h"

#include <QCoreApplication>

namespace ombrel {

namespace {

struct Glossary {
    Q_DECLARE_TR_FUNCTIONS(Glossary)
};

struct Texts {
    QString title;
    QString definition;
    QString explanation;
    QString example;
};

Texts texts(GlossaryTopic topic) {
    switch (topic) {
    case GlossaryTopic::chunkingStrategy:
        return {
            Glossary::tr("Chunking strategy"),
            Glossary::tr("How a document gets cut into the small pieces that are actually "
                         "indexed and searched."),
            Glossary::tr("RAG never searches a whole document — it searches chunks. How you draw "
                         "the cut lines changes what ends up together in one chunk, which "
                         "changes what the model can see at once.\n\n"
                         "• Fixed — cuts every N tokens, ignoring sentence or paragraph "
                         "boundaries. Simple and predictable, but can slice a sentence in "
                         "half.\n\n"
                         "• Paragraph — cuts on blank lines, so each chunk is one natural "
                         "paragraph. Keeps ideas together, but chunk sizes vary a lot.\n\n"
                         "• Heading-aware — cuts at Markdown headings, splitting any section "
                         "bigger than the target and folding consecutive small sections together "
                         "up to it. Best when your source has real structure."),
            Glossary::tr("A 900-token \"Troubleshooting\" section with 3 subheadings becomes 3 "
                         "even chunks with Fixed, ~6 uneven chunks with Paragraph. With "
                         "Heading-aware, each subheading over the target gets its own chunk; "
                         "subheadings under it fold together, so raising the target can merge "
                         "all 3 into fewer, and lowering it can push back toward 3."),
        };
    case GlossaryTopic::chunkSize:
        return {
            Glossary::tr("Target chunk size"),
            Glossary::tr("How many tokens go into each chunk before it's indexed."),
            Glossary::tr("Smaller chunks are more precise — a search match is more likely to be "
                         "exactly on-topic — but you need more of them to cover the same "
                         "document. Larger chunks give the model more surrounding context per "
                         "match, but a match can drag in unrelated text sitting in the same "
                         "chunk."),
            Glossary::tr("At 150 tokens, chunks are almost single-paragraph and very targeted. "
                         "At 800 tokens, a chunk can span a whole subsection, so one match "
                         "brings a lot of context — including parts that don't answer the "
                         "question."),
        };
    case GlossaryTopic::overlap:
        return {
            Glossary::tr("Overlap"),
            Glossary::tr("How much text the end of one chunk repeats at the start of the next "
                         "one."),
            Glossary::tr("Chunk boundaries are arbitrary — they can land in the middle of an "
                         "idea. Overlap copies a slice of text into both neighboring chunks so "
                         "that idea isn't lost no matter which chunk gets retrieved. Higher "
                         "overlap means a larger index for the same document, but less risk of a "
                         "mid-sentence cut hiding an answer."),
            Glossary::tr("With a 400-token chunk size and 10% overlap, chunk 2 starts with "
                         "roughly the last 40 tokens of chunk 1, so a sentence that spans the "
                         "boundary appears intact in at least one chunk."),
        };
    case GlossaryTopic::index:
        return {
            Glossary::tr("Index"),
            Glossary::tr("The data structure that finds candidate chunks for a question."),
            Glossary::tr("• Keyword — BM25 full-text search. Matches exact words and phrases; "
                         "great for names, codes, and jargon; misses paraphrases.\n\n"
                         "• Vector — embeddings built on the Mac and shipped in the bundle. "
                         "Matches by meaning, so it finds relevant text even with completely "
                         "different wording.\n\n"
                         "• Hybrid — runs keyword and vector search together and fuses the "
                         "ranked results. Usually the best default.\n\n"
                         "• Spotlight — hands search off to Apple's on-device "
                         "SpotlightSearchTool instead of a custom index; only available in Tool "
                         "(agentic) query mode."),
            Glossary::tr("Query: \"car won't start\". A document says \"vehicle fails to turn "
                         "on.\" Keyword search finds nothing — no shared words. Vector search "
                         "finds it, because the two phrases mean the same thing."),
        };
    case GlossaryTopic::enrichment:
        return {
            Glossary::tr("Enrichment"),
            Glossary::tr("Extra processing applied to chunks at build time to make them easier "
                         "to find or use later."),
            Glossary::tr("• Contextual notes — a model writes a one-line note on where each "
                         "chunk sits in the document, which helps retrieval when the chunk text "
                         "alone is ambiguous.\n\n"
                         "• Generated questions — a model drafts likely questions each chunk "
                         "answers, and those get indexed too, so a user's phrasing matches even "
                         "if it never appears in the source text.\n\n"
                         "• Parent–child — chunks are indexed small for precise matching, but "
                         "when one matches, its full parent section is sent to the model instead "
                         "of just the small piece."),
            Glossary::tr("A chunk that just says \"Reduces battery drain by 40%\" is hard to "
                         "match on its own. A contextual note adds \"From: Settings > Battery > "
                         "Low Power Mode\", so a question about Low Power Mode can find it."),
        };
    case GlossaryTopic::queryTransform:
        return {
            Glossary::tr("Query transform"),
            Glossary::tr("What happens to the user's question before it's used to search the "
                         "index."),
            Glossary::tr("• Direct — searches with the question exactly as typed.\n\n"
                         "• Query rewrite — a model turns the raw question into a cleaner search "
                         "query first.\n\n"
                         "• Multi-query — a model drafts 2–3 different phrasings, searches with "
                         "each, and merges the results.\n\n"
                         "• HyDE — a model drafts a hypothetical answer first, then searches "
                         "using that drafted answer's text (answers often read more like the "
                         "source text than questions do).\n\n"
                         "• Tool (agentic) — every other option above decides on one search plan "
                         "up front, runs it, and stops. Tool (agentic) instead hands the model a "
                         "search tool and lets it drive: for each question it decides whether to "
                         "call the tool at all, what to search for, and — after reading what "
                         "came back — whether to call it again with a different query before "
                         "answering. It might search zero times (if it's confident already), "
                         "once, or several times in a row, each one informed by the last. That's "
                         "the trade: more flexible than a fixed plan, but slower and less "
                         "predictable, since the number of model round-trips isn't known ahead "
                         "of time."),
            Glossary::tr("Question: \"Why is my phone hot?\" Direct searches that exact "
                         "sentence. Rewrite might search \"causes of device overheating\". HyDE "
                         "would draft \"The device may overheat due to heavy background "
                         "processing or a failing battery...\" and search with that text. Tool "
                         "(agentic) doesn't decide any of that in advance — it might call the "
                         "tool with \"battery overheating causes\", read the results, decide "
                         "they're too general, and call it again with \"charging habits and "
                         "heat\" before answering — or, for an easy question, just answer "
                         "without searching at all."),
        };
    case GlossaryTopic::rerank:
        return {
            Glossary::tr("Rerank with model"),
            Glossary::tr("A second, more expensive pass that reorders the chunks the index "
                         "already returned."),
            Glossary::tr("The index's ranking (a keyword score, a vector similarity, or a fusion "
                         "of both) is fast but approximate. Reranking sends the question and "
                         "each candidate chunk to a model, which scores relevance directly and "
                         "reorders the list — usually more accurate, at the cost of one extra "
                         "model call per query."),
            Glossary::tr("The index returns 6 chunks ranked by keyword score; the true best "
                         "answer lands at #4 because it uses different wording. Reranking reads "
                         "all 6 against the question and moves it to #1."),
        };
    case GlossaryTopic::topK:
        return {
            Glossary::tr("Top-k"),
            Glossary::tr("How many chunks are pulled from the index for a single question."),
            Glossary::tr("A higher top-k casts a wider net, which helps recall — the right chunk "
                         "is more likely to be somewhere in the list — but adds more text for "
                         "reranking and context packing to work through, and raises the chance "
                         "of irrelevant chunks crowding out the context budget."),
            Glossary::tr("Top-k = 6 means the 6 highest-scoring chunks move on to the next "
                         "stage, even if a 7th chunk was also a decent match."),
        };
    case GlossaryTopic::contextBudget:
        return {
            Glossary::tr("Context budget"),
            Glossary::tr("The token ceiling for everything sent to the model: instructions, "
                         "retrieved chunks, the question, and the answer."),
            Glossary::tr("Retrieved chunks are added in rank order until this budget is used up, "
                         "so raising it lets more retrieved context through, at the cost of a "
                         "bigger prompt per query and less headroom before the model's context "
                         "window limit."),
            Glossary::tr("A 3,000-token budget might break down as ~120 tokens of instructions, "
                         "~2,400 tokens of retrieved chunks, ~40 tokens for the question, and "
                         "~440 tokens reserved for the answer."),
        };
    }
    return {};
}

} // namespace

QString title(GlossaryTopic topic) {
    return texts(topic).title;
}

QString definition(GlossaryTopic topic) {
    return texts(topic).definition;
}

QString explanation(GlossaryTopic topic) {
    return texts(topic).explanation;
}

QString example(GlossaryTopic topic) {
    return texts(topic).example;
}

} // namespace ombrel
