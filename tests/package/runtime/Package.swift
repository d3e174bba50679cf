// swift-tools-version: 6.2
import Foundation
import PackageDescription

// The test says where the runtime is.
let runtime = ProcessInfo.processInfo.environment["OMBREL_RUNTIME"] ?? "../../../packages/OmbrelRuntime"

let package = Package(
    name: "RuntimeProbe",
    platforms: [.macOS(.v26)],
    dependencies: [.package(path: runtime)],
    targets: [
        .executableTarget(
            name: "RuntimeProbe",
            dependencies: [.product(name: "OmbrelRuntime", package: "OmbrelRuntime")])
    ]
)
