/// The page that tells how a package is used. Its Swift blocks together are a source file that
/// compiles.
struct PackageReadme {
    let names: PackageNames
    let flows: [FlowSource]
    let tools: [ToolSource]

    var text: String {
        var page = SourceWriter()
        page.line("# \(SwiftLiteral.comment(names.package))")
        page.line()
        page.line("Flows from Ombrel Studio, as a Swift package. They ask the on-device model; no")
        page.line("data leaves the device. Exporting again replaces the files of this package and")
        page.line("keeps what else is in its folder.")
        page.line()
        page.line("## Adding it")
        page.line()
        page.line("In Xcode, add this folder as a local package. In a manifest:")
        page.line()
        page.line("```")
        page.line(".package(path: \"../\(SwiftLiteral.comment(names.package))\")")
        page.line("```")
        page.line()
        page.line("and `\"\(names.module)\"` among the dependencies of the target.")
        page.line()
        page.line("## Using it")
        page.line()
        page.line("```swift")
        page.line("import \(names.module)")
        page.line("import \(names.runtime)")
        page.line("```")
        if !tools.isEmpty {
            page.line()
            page.line("The application implements the tools. Each is called with the output of the")
            page.line("step before it, and answers with text, JSON as a rule.")
            page.line()
            page.line("```swift")
            for tool in tools {
                page.block("struct My\(tool.protocolName): \(tool.protocolName)") { page in
                    page.block("func call(_ input: String) async throws -> String") { page in
                        page.line("\"{}\"")
                    }
                }
            }
            page.line("```")
        }
        for flow in flows {
            write(flow, to: &page)
        }
        page.line()
        page.line("Every flow also takes `model:` and `embedder:` in place of the device's own, and")
        page.line("`trace:`, which is told each step. A flow throws a `FlowError` with a sentence")
        page.line("that says what went wrong. Where FoundationModels is missing (Linux), the model is")
        page.line("a server on this machine with the OpenAI protocol, at `OMBREL_MODEL_URL`.")
        return page.text
    }

    private func write(_ flow: FlowSource, to page: inout SourceWriter) {
        page.line()
        page.line("### \(flow.typeName)")
        page.line()
        page.line("The flow “\(markdown(flow.spec.name))”.")
        page.line()
        page.line("```swift")
        let arguments: String = flow.tools.map { tool in
            "\(tool.identifier): My\(tool.protocolName)()"
        }.joined(separator: ", ")
        page.block("func use\(flow.typeName)() async throws") { page in
            if flow.spec.kind == .conversational {
                page.line("let conversation = try \(flow.typeName)(\(arguments))")
                page.line("let reply = try await conversation.send(\"Hello\")")
                page.line("print(reply.text)")
                return
            }
            page.line("let flow = try \(flow.typeName)(\(arguments))")
            let values: String = flow.input.sampleArguments
            page.line("let input = \(flow.typeName).Input(\(values))")
            page.line("let output = try await flow.run(input)")
            page.line("print(output)")
        }
        page.line("```")
    }

    private func markdown(_ text: String) -> String {
        String(
            SwiftLiteral.comment(text).flatMap { character in
                "\\`*_{}[]<>#|!".contains(character) ? ["\\", character] : [character]
            })
    }
}

extension RecordSource {
    /// Arguments for the initialiser, of the members that must have a value.
    var sampleArguments: String {
        members.filter { !$0.property.isOptional }.map { member in
            "\(member.label): \(sample(of: member))"
        }.joined(separator: ", ")
    }

    private func sample(of member: Member) -> String {
        switch member.property.kind {
        case .string: "\"…\""
        case .int: "1"
        case .double: "1.5"
        case .bool: "true"
        case .array: "[]"
        case .object, .enumeration:
            switch nestedType(named: member.type) {
            case .record(let record): ".init(\(record.sampleArguments))"
            case .choice(let choice): ".\(choice.cases[0].identifier)"
            case nil: "\"…\""
            }
        }
    }
}
