#include "shell/tabs/QuestionHistory.h"

namespace ombrel {

void QuestionHistory::add(const QString& question) {
    if (!question.trimmed().isEmpty()) {
        m_questions.removeAll(question);
        m_questions.append(question);
    }
    m_place = m_questions.size();
}

QString QuestionHistory::older(const QString& current) {
    if (m_place >= m_questions.size() || m_questions[m_place] != current) {
        m_place = m_questions.size();
        m_typed = current;
    }
    qsizetype place = m_place - 1;
    if (place >= 0 && m_questions[place] == current) {
        place -= 1; // the newest stands in the field still
    }
    if (place < 0) {
        return current;
    }
    m_place = place;
    return m_questions[place];
}

QString QuestionHistory::newer(const QString& current) {
    if (m_place >= m_questions.size() || m_questions[m_place] != current) {
        return current;
    }
    m_place += 1;
    return m_place < m_questions.size() ? m_questions[m_place] : m_typed;
}

} // namespace ombrel
