import Foundation

/// Runs `body` where it may call itself very deeply: a flow is one nested value.
///
/// The caller waits, so nothing runs at the same time.
func withLargeStack<Value>(_ body: @escaping () throws -> Value) throws -> Value {
    nonisolated(unsafe) let body = body
    nonisolated(unsafe) var result: Result<Value, any Error>?
    let done = DispatchSemaphore(value: 0)
    let thread = Thread {
        result = Result { try body() }
        done.signal()
    }
    thread.stackSize = 1 << 29
    thread.start()
    done.wait()
    return try result!.get()
}
