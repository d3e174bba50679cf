#if canImport(NaturalLanguage)
    import NaturalLanguage

    /// The system's sentence embeddings, one a language.
    struct SystemEmbedder: QueryEmbedder {
        func vector(for text: String, inLanguageOf sample: String) async throws -> [Double]? {
            let language = NLLanguageRecognizer.dominantLanguage(for: sample) ?? .english
            return NLEmbedding.sentenceEmbedding(for: language)?.vector(for: text)
        }
    }
#endif
