// swift-tools-version: 6.2
import PackageDescription

let package = Package(
    name: "OmbrelRuntime",
    platforms: [.macOS(.v26), .iOS(.v26)],
    products: [
        .library(name: "OmbrelRuntime", targets: ["OmbrelRuntime"])
    ],
    targets: [
        .target(
            name: "OmbrelRuntime",
            // Programs that are built for debugging search as fast as others.
            swiftSettings: [.unsafeFlags(["-O"], .when(configuration: .debug))]),
        .testTarget(name: "OmbrelRuntimeTests", dependencies: ["OmbrelRuntime"]),
    ]
)
