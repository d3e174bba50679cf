#pragma once

#include <QString>
#include <QStringList>

namespace ombrel {

// The questions that were asked since the window was opened, for asking one again. Walking up from
// what stands in the field leads to the older ones, walking down back to it.
class QuestionHistory {
  public:
    // A question that is there already becomes the newest. Ends a walk.
    void add(const QString& question);
    const QStringList& questions() const { return m_questions; } // the newest last
    // The next older or newer question; what stands in the field when there is none.
    QString older(const QString& current);
    QString newer(const QString& current);

  private:
    QStringList m_questions;
    qsizetype m_place = 0; // of what the field shows; one behind the last is what was typed
    QString m_typed;
};

} // namespace ombrel
