#pragma once

#include "flows/FlowIssue.h"

#include <QWidget>

#include <string>
#include <utility>
#include <vector>

namespace ombrel {

// Issues of a flow, one below the other. The rows are named "issue." and their number from 0.
class IssueList final : public QWidget {
    Q_OBJECT

  public:
    explicit IssueList(QWidget* parent = nullptr);
    void showIssues(const std::vector<FlowIssue>& issues);

  private:
    std::vector<std::pair<FlowIssue::Severity, std::string>> m_shown;
};

} // namespace ombrel
