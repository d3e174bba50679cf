import Foundation
import Testing

@testable import OmbrelRuntime

@Suite struct LoopbackAddressTests {
    @Test(arguments: [
        ("http://127.0.0.1:8123/v1", 8123, "/v1"), ("HTTP://localhost", 80, ""),
        ("http://[::1]:99/", 99, ""), ("http://[::1]", 80, ""),
        ("http://127.255.0.9:1/a/b//", 1, "/a/b"),
    ])
    func takesAddressesOfThisMachine(text: String, port: UInt16, path: String) throws {
        let address = try LoopbackAddress(text)
        #expect(address.port == port)
        #expect(address.path == path)
    }

    @Test(arguments: [
        "", "127.0.0.1:80", "https://127.0.0.1", "http://", "http://example.com/v1",
        "http://10.0.0.1", "http://128.0.0.1", "http://127.0.0.1.example.com",
        "http://localhost.example.com", "http://127.0.0.1@example.com", "http://127.1",
        "http://2130706433", "http://0x7f.0.0.1", "http://127.0.0.01", "http://127.0.0.256",
        "http://[::2]", "http://[::ffff:10.0.0.1]", "http://127.0.0.1:0", "http://127.0.0.1:65536",
        "http://127.0.0.1:+1", "http://127.0.0.1:", "http://127.0.0.1/\r\nHost: x", "http://127.0.0.1/a b",
        "http://127.0.0.1/?a", "http://user@127.0.0.1/", "http://localhost:80:80", "http://127.0.0.１",
        "http://0.0.0.0", "http://[::]", "http://1270.0.1",
    ])
    func refusesEveryOther(text: String) {
        #expect(throws: FlowError.self) { try LoopbackAddress(text) }
    }
}

@Suite struct LoopbackResponseReaderTests {
    private func read(_ text: String, step: Int, limit: Int = 1000) throws -> LoopbackResponse {
        var reader = LoopbackResponseReader(bodyLimit: limit)
        let bytes = Array(text.utf8)
        for start in stride(from: 0, to: bytes.count, by: step) {
            if let response = try reader.take(bytes[start..<min(start + step, bytes.count)]) {
                return response
            }
        }
        return try reader.finish()
    }

    @Test(arguments: [1, 2, 3, 7, 1000])
    func readsEveryForm(step: Int) throws {
        let head = "HTTP/1.1 200 OK\r\nContent-Type: text/x\r\n"
        for text in [
            head + "content-length:  5 \r\n\r\nhello", head + "\r\nhello",
            head + "Transfer-Encoding: chunked\r\n\r\n2\r\nhe\r\n3;x=y\r\nllo\r\n0\r\n\r\n",
            head + "Transfer-Encoding: Chunked\r\nContent-Length: 1\r\n\r\n5\r\nhello\r\n0\r\n",
            "HTTP/1.1 100 Continue\r\n\r\n" + head + "Content-Length: 5\r\n\r\nhello and more",
            "HTTP/1.0 200 \nContent-Type: text/x\n\nhello",
        ] {
            let response = try read(text, step: step)
            #expect(response.text == "hello")
            #expect(response.status == 200)
            #expect(response.contentType == "text/x")
        }
        #expect(try read("HTTP/1.1 204 No\r\n\r\n", step: step).body.isEmpty)
    }

    @Test(arguments: [
        "", "HTTP/1.1 200", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhell",
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhel",
    ])
    func anAnswerThatEndsEarlyIsAFault(text: String) {
        #expect(throws: LoopbackResponseReader.Fault.endedEarly) { try read(text, step: 3) }
    }

    @Test(arguments: [
        "SSH-2.0-x\r\n", "HTTP/1.1 OK\r\n\r\n", "HTTP/1.1 200 OK\r\nno colon\r\n\r\n",
        "HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n",
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nxyz\r\n",
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n-1\r\n",
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1\r\nabc",
        String(repeating: "x", count: 100_000),
        "HTTP/1.1 200 OK\r\n" + String(repeating: "a: b\r\n", count: 20_000),
    ])
    func whatIsNotHTTPIsAFault(text: String) {
        #expect(throws: LoopbackResponseReader.Fault.notHTTP) { try read(text, step: 1000) }
    }

    @Test(arguments: [
        "HTTP/1.1 200 OK\r\nContent-Length: 11\r\n\r\n",
        "HTTP/1.1 200 OK\r\nContent-Length: 9223372036854775807\r\n\r\n",
        "HTTP/1.1 200 OK\r\n\r\n12345678901",
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n7fffffffffffffff\r\n",
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n6\r\n123456\r\n6\r\n123456\r\n",
    ])
    func anAnswerOverTheLimitIsAFault(text: String) {
        #expect(throws: LoopbackResponseReader.Fault.tooLarge) { try read(text, step: 4, limit: 10) }
    }
}

@Suite struct ServerModelTests {
    private func model(_ server: ScriptedServer, key: String = "", name: String = "") throws
        -> ServerModel
    {
        try ServerModel(url: server.url, key: key, name: name)
    }
    private let choice = ValueSchema.choice(name: "Output", cases: ["yes", "no"])

    @Test func asksInTheProtocol() async throws {
        let server = try ScriptedServer([ScriptedServer.chat("Hello \"you\"\n")])
        let answer = try await model(server, key: "secret", name: "small").respond(
            instructions: "Be\nkind.", prompt: "Hi 😀")
        #expect(answer == "Hello \"you\"\n")
        let head = server.received[0].components(separatedBy: "\r\n\r\n")[0]
        #expect(head.hasPrefix("POST /v1/chat/completions HTTP/1.1\r\nHost: 127.0.0.1:\(server.port)\r\n"))
        #expect(head.contains("\r\nAuthorization: Bearer secret"))
        #expect(
            try server.body(0).json
                == #"{"model":"small","messages":[{"role":"system","content":"Be\nkind."},"#
                + #"{"role":"user","content":"Hi 😀"}],"max_tokens":800,"stream":false}"#)
    }

    @Test func leavesOutWhatThereIsNot() async throws {
        let server = try ScriptedServer([ScriptedServer.chat("x")])
        _ = try await model(server).respond(instructions: "", prompt: "Hi")
        #expect(!server.received[0].contains("Authorization"))
        let body = try server.body(0)
        #expect(body["model"] == nil)
        #expect(body["messages"]?.json == #"[{"role":"user","content":"Hi"}]"#)
    }

    @Test func holdsAnAnswerToItsSchema() async throws {
        let server = try ScriptedServer([ScriptedServer.chat("\"yes\"")])
        let answer = try await model(server).respond(instructions: "", prompt: "Q", schema: choice)
        #expect(answer == "yes")
        let body = try server.body(0)
        #expect(
            body["response_format"]?.json
                == #"{"type":"json_schema","json_schema":{"name":"answer","strict":true,"#
                + #""schema":{"type":"string","enum":["yes","no"]}}}"#)
        #expect(
            body["messages"]?.json
                == #"[{"role":"user","content":"Q\n\nAnswer with nothing but JSON that fits this JSON schema:\n"#
                + #"{\"type\":\"string\",\"enum\":[\"yes\",\"no\"]}"}]"#)
    }

    @Test func doesWithoutSchemaWhereAServerHasNone() async throws {
        let refusal = ScriptedServer.json(
            #"{"error":{"message":"response_format is unknown"}}"#, status: "400 Bad Request")
        let server = try ScriptedServer([
            refusal, ScriptedServer.chat("Well: no"), ScriptedServer.chat("no"),
            ScriptedServer.chat("yes"),
        ])
        let model = try model(server)
        // The refusal may have been for another reason, so the next question tries again …
        let first = try await model.respond(instructions: "", prompt: "Q", schema: choice)
        #expect(first == "Well: no")
        #expect(try server.body(1)["response_format"] == nil)
        let second = try await model.respond(instructions: "", prompt: "Q", schema: choice)
        #expect(second == "no")
        #expect(try server.body(2)["response_format"] != nil)
    }

    @Test func remembersAServerThatHoldsToNoSchema() async throws {
        let refusal = ScriptedServer.json(#"{"error":"no"}"#, status: "400 Bad Request")
        let server = try ScriptedServer([
            refusal, ScriptedServer.chat("no"), ScriptedServer.chat("yes"),
        ])
        let model = try model(server)
        _ = try await model.respond(instructions: "", prompt: "Q", schema: choice)
        let second = try await model.respond(instructions: "", prompt: "Q", schema: choice)
        #expect(second == "yes")
        #expect(try server.body(2)["response_format"] == nil)
    }

    @Test func saysWhatDoesNotFit() async throws {
        let schema = ValueSchema.object(
            name: "Output", properties: [.init(name: "price", schema: .double)])
        let server = try ScriptedServer([
            ScriptedServer.chat(#"{"price":"x"}"#), ScriptedServer.chat(#"{"cost":1}"#),
        ])
        let error = await #expect(throws: FlowError.self) {
            try await model(server).respond(instructions: "", prompt: "Q", schema: schema)
        }
        #expect(
            error?.message
                == "The model's answer does not fit what was asked for. \"price\" is missing.")
    }

    @Test func saysThatAnAnswerWasCutOff() async throws {
        let server = try ScriptedServer([ScriptedServer.chat(#"{"price":"#, finish: "length")])
        let error = await #expect(throws: FlowError.self) {
            try await model(server).respond(
                instructions: "", prompt: "Q",
                schema: .object(name: "O", properties: [.init(name: "price", schema: .double)]))
        }
        #expect(error?.message.contains("cut off") == true)
    }

    @Test func takesACutOffTextAsItIs() async throws {
        let server = try ScriptedServer([ScriptedServer.chat("So far", finish: "length")])
        let answer = try await model(server).respond(instructions: "", prompt: "Q")
        #expect(answer == "So far")
    }

    @Test(arguments: [
        (
            "401 No", "{}",
            "The model server does not accept the key."
        ),
        (
            "400 Bad", #"{"error":{"type":"exceed_context_size_error","n_prompt_tokens":9,"n_ctx":5}}"#,
            "The text is too long for the model: it has 9 tokens, and the model takes 5."
        ),
        (
            "400 Bad", #"{"error":{"message":"the Maximum Context is less"}}"#,
            "The text is too long for the model."
        ),
        ("500 Oh", #"{"error":"out of memory"}"#, "The model server answered with an error: out of memory"),
        ("503 Oh", "", "The model server answered with status 503."),
        ("502 Oh", "plain words", "The model server answered with an error: plain words"),
        ("200 OK", "", "The model server gave an empty answer."),
        ("200 OK", "<html>", "The model server answered with something that is not JSON."),
        ("200 OK", "{}", "The model server answered with something that is not a chat answer."),
        ("200 OK", #"{"error":{"message":"late"}}"#, "The model server answered with an error: late"),
        (
            "200 OK",
            #"{"choices":[{"message":{"content":"","reasoning_content":"hm"},"finish_reason":"length"}]}"#,
            "The model used all the tokens of its answer for thinking."
        ),
    ])
    func saysWhatWentWrong(status: String, body: String, message: String) async throws {
        let server = try ScriptedServer([ScriptedServer.json(body, status: status)])
        let error = await #expect(throws: FlowError.self) {
            try await model(server).respond(instructions: "", prompt: "Q")
        }
        #expect(error?.message == message)
    }

    @Test func aServerThatStopsIsAnError() async throws {
        let server = try ScriptedServer([
            .pieces(["HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n", "{\"choices\""])
        ])
        let error = await #expect(throws: FlowError.self) {
            try await model(server).respond(instructions: "", prompt: "Q")
        }
        #expect(
            error?.message
                == "The model server at http://127.0.0.1:\(server.port) stopped in the middle of its answer.")
    }

    @Test func whereNobodyListensIsAnError() async throws {
        let server = try ScriptedServer([])
        let model = try model(server)
        var message = ""
        // As long as the server has not ended, it takes connections and closes them.
        while !message.hasPrefix("Nothing answers") {
            let error = await #expect(throws: FlowError.self) {
                try await model.respond(instructions: "", prompt: "Q")
            }
            message = try #require(error?.message)
        }
        #expect(message == "Nothing answers at http://127.0.0.1:\(server.port).")
    }

    @Test func aSilentServerIsGivenUp() async throws {
        let server = try ScriptedServer([.silence])
        let limits = LoopbackRequest.Limits(total: .milliseconds(50))
        let error = await #expect(throws: FlowError.self) {
            try await ServerModel(url: server.url, key: "", name: "", limits: limits).respond(
                instructions: "", prompt: "Q")
        }
        #expect(error?.message.contains("did not answer within") == true)
    }

    @Test func cancellingEndsTheRequest() async throws {
        let server = try ScriptedServer([.silence])
        let model = try model(server)
        let task = Task { try await model.respond(instructions: "", prompt: "Q") }
        while server.received.isEmpty {
            try await Task.sleep(for: .milliseconds(1))
        }
        task.cancel()
        await #expect(throws: CancellationError.self) { try await task.value }
        await #expect(throws: CancellationError.self) {
            try await Task {
                withUnsafeCurrentTask { $0?.cancel() }
                return try await model.respond(instructions: "", prompt: "Q")
            }.value
        }
    }

    @Test func keysThatAreNoneAreRefused() async throws {
        let server = try ScriptedServer([])
        await #expect(throws: FlowError.self) {
            try await model(server, key: "a\r\nb").respond(instructions: "", prompt: "Q")
        }
    }

    @Test func theEnvironmentNamesTheServer() async throws {
        let server = try ScriptedServer([ScriptedServer.chat("Hi")])
        let model = EnvironmentModel(environment: [
            "OMBREL_MODEL_URL": server.url, "OMBREL_MODEL_KEY": "k", "OMBREL_MODEL_NAME": "n",
        ])
        let answer = try await model.respond(instructions: "", prompt: "Q")
        #expect(answer == "Hi")
        #expect(try server.body(0)["model"] == "n")
    }

    @Test func anEnvironmentWithoutServerSaysWhatToSet() async throws {
        func message(_ environment: [String: String]) async -> String? {
            await #expect(throws: FlowError.self) {
                try await EnvironmentModel(environment: environment).respond(
                    instructions: "", prompt: "")
            }?.message
        }
        #expect(await message([:])?.contains("Set OMBREL_MODEL_URL") == true)
        #expect(
            await message(["OMBREL_MODEL_ERROR": "No model is installed.", "OMBREL_MODEL_URL": "x"])
                == "No model is installed.")
        #expect(
            await message(["OMBREL_MODEL_URL": "http://example.com"])?.contains("not on this machine")
                == true)
        let error = await #expect(throws: FlowError.self) {
            try await EnvironmentEmbedder(environment: [:]).vector(for: "x", inLanguageOf: "")
        }
        #expect(error?.message.contains("Set OMBREL_EMBEDDING_URL") == true)
    }
}

@Suite struct ServerEmbedderTests {
    private func vector(_ numbers: String) -> ScriptedServer.Answer {
        ScriptedServer.json(#"{"data":[{"index":0,"embedding":[\#(numbers)]}]}"#)
    }
    private let tooLong = ScriptedServer.json(
        #"{"error":{"type":"exceed_context_size_error"}}"#, status: "400 Bad Request")

    @Test func givesTheNumbersInSinglePrecision() async throws {
        let server = try ScriptedServer([vector("0.1,-2,3e-3")])
        let embedder = try ServerEmbedder(url: server.url, key: "", name: "m")
        let numbers = try await embedder.vector(for: "a \"b\"", inLanguageOf: "")
        #expect(numbers == [Double(Float(0.1)), -2, Double(Float(3e-3))])
        #expect(server.received[0].hasPrefix("POST /v1/embeddings "))
        #expect(try server.body(0).json == #"{"model":"m","input":["a \"b\""]}"#)
    }

    @Test func aTextThatIsTooLongIsTheMeanOfItsParts() async throws {
        let server = try ScriptedServer([
            tooLong, vector("1,0"), tooLong, vector("0,1"), vector("0,1"),
        ])
        let embedder = try ServerEmbedder(url: server.url, key: "", name: "")
        let text = String(repeating: "abcd ", count: 20)
        let numbers = try #require(await embedder.vector(for: text, inLanguageOf: ""))
        let first = try #require(server.body(1)["input"]?.json)
        #expect(first.hasPrefix("[\"abcd abcd"))
        let weight = Double(first.utf8.count - 4)
        let rest = Double(text.utf8.count) - weight
        let length = (weight * weight + rest * rest).squareRoot()
        #expect(abs(numbers[0] - weight / length) < 1e-12)
        #expect(abs(numbers[1] - rest / length) < 1e-12)
    }

    @Test func textsAreCutBetweenWordsOrScalars() {
        #expect(ServerEmbedder.cutPosition(Array("aaaa bbb".utf8)) == 4)
        #expect(ServerEmbedder.cutPosition(Array("aa bbbbbbbb".utf8)) == 2)
        #expect(ServerEmbedder.cutPosition(Array("bbbbbbbb aa".utf8)) == 8)
        #expect(ServerEmbedder.cutPosition(Array("ééé".utf8)) == 2)
        #expect(ServerEmbedder.cutPosition(Array(" aaaaaaaa".utf8)) == 4)
    }

    @Test(arguments: [
        "{}", "", #"{"data":[]}"#, #"{"data":[{"embedding":[]}]}"#,
        #"{"data":[{"embedding":["x"]}]}"#, #"{"data":[{"embedding":[1e400]}]}"#,
        #"{"data":[{"embedding":[1e39]}]}"#,
    ])
    func whatIsNoVectorIsAnError(body: String) async throws {
        let server = try ScriptedServer([ScriptedServer.json(body)])
        let embedder = try ServerEmbedder(url: server.url, key: "", name: "")
        let error = await #expect(throws: FlowError.self) {
            try await embedder.vector(for: "x", inLanguageOf: "")
        }
        #expect(
            error?.message == "The embedding server answered with something that is not a vector.")
    }
}
