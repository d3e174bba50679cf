// swift-tools-version: 6.2
import PackageDescription

// Requests of hundreds of megabytes are read here, so the tools are optimised in every
// configuration: the studio builds them with a plain `swift build`.
let optimised: [SwiftSetting] = [.unsafeFlags(["-O"])]

let package = Package(
    name: "OmbrelStudioCore",
    platforms: [.macOS(.v26)],
    products: [
        .library(name: "OmbrelStudioCore", targets: ["OmbrelStudioCore"]),
        .executable(name: "StudioCLI", targets: ["StudioCLI"]),
        .executable(name: "ExportCLI", targets: ["ExportCLI"]),
    ],
    dependencies: [.package(path: "../OmbrelRuntime")],
    targets: [
        .target(name: "CChildProcess"),
        .target(
            name: "OmbrelStudioCore",
            dependencies: ["CChildProcess", "OmbrelRuntime"],
            swiftSettings: optimised),
        .executableTarget(
            name: "StudioCLI", dependencies: ["OmbrelStudioCore"], swiftSettings: optimised),
        .executableTarget(
            name: "ExportCLI", dependencies: ["OmbrelStudioCore"], swiftSettings: optimised),
        .testTarget(
            name: "OmbrelStudioCoreTests",
            dependencies: ["OmbrelStudioCore", "OmbrelRuntime", "StudioCLI", "ExportCLI"],
            exclude: ["Golden"]),
    ]
)
