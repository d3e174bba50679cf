#if canImport(FoundationEssentials)
    import FoundationEssentials
#else
    import Foundation
#endif

/// The language model of this device.
public enum OnDeviceModel {
    /// The system's model where there is one; elsewhere the server on this machine that the
    /// environment names: `OMBREL_MODEL_URL`, `OMBREL_MODEL_KEY` and `OMBREL_MODEL_NAME`.
    public static let `default`: any LanguageModel = {
        #if canImport(FoundationModels)
            return SystemModel()
        #else
            return EnvironmentModel(environment: ProcessInfo.processInfo.environment)
        #endif
    }()
}

/// The sentence embedding of this device.
public enum OnDeviceEmbedder {
    /// The system's embedding where there is one; elsewhere the server on this machine that the
    /// environment names: `OMBREL_EMBEDDING_URL`, `OMBREL_EMBEDDING_KEY` and
    /// `OMBREL_EMBEDDING_NAME`.
    public static let `default`: any QueryEmbedder = {
        #if canImport(NaturalLanguage)
            return SystemEmbedder()
        #else
            return EnvironmentEmbedder(environment: ProcessInfo.processInfo.environment)
        #endif
    }()
}
