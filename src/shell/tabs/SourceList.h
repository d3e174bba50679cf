#pragma once

#include <QStringList>
#include <QTreeView>

namespace ombrel {

// The table of sources. Several can be selected; Delete removes them, and what the clipboard holds
// can be pasted.
class SourceList final : public QTreeView {
    Q_OBJECT

  public:
    explicit SourceList(QWidget* parent = nullptr);

  public Q_SLOTS:
    // Named as the command that the window's menu calls.
    void paste();

  Q_SIGNALS:
    void removeWanted();
    void filesPasted(const QStringList& paths);
    void textPasted(const QString& text);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void fitColumns();
};

} // namespace ombrel
