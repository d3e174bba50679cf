#pragma once

#include "core/RAGIndex.h"
#include "shell/design/Card.h"

class QPushButton;

namespace ombrel {

class Badge;
class Banner;
class ElidedLabel;
class IconView;
class LanguageRecognizer;
class TextLabel;

// The selected source: what came of reading it, where it lies, and what can be done with it.
class SourceDetail final : public Card {
    Q_OBJECT

  public:
    explicit SourceDetail(QWidget* parent = nullptr);
    // Shows the source, which the index holds. `selectedCount`: how many are selected in the list.
    void show(const RAGIndex& index, const SourceDocument& source, int selectedCount,
              const LanguageRecognizer& languages);

  Q_SIGNALS:
    void openWanted();
    void folderWanted();
    void chunksWanted();
    void removeWanted();

  private:
    QString facts(const RAGIndex& index, const SourceDocument& source,
                  const LanguageRecognizer& languages);

    IconView* m_icon;
    ElidedLabel* m_name;
    Badge* m_status;
    TextLabel* m_counts;
    ElidedLabel* m_place;
    TextLabel* m_facts;
    TextLabel* m_advice;
    ElidedLabel* m_excerpt;
    QPushButton* m_open;
    QPushButton* m_folder;
    QPushButton* m_chunks;
    QPushButton* m_remove;
    // What language the chunks are in, which is found out once.
    const void* m_recognized = nullptr;
    QString m_language;
};

} // namespace ombrel
