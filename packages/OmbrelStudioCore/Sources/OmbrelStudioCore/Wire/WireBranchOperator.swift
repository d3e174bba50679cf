/// How a branch compares.
public enum WireBranchOperator: String, Sendable {
    case equals, contains, isEmpty, greaterThan, lessThan
}
