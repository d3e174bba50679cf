#pragma once

#include <QCheckBox>

namespace ombrel {

// A check box with the name of something: cut with "…" where it has no room, and then the whole is
// its tooltip. An "&" in it is an "&".
class ElidedCheckBox final : public QCheckBox {
    Q_OBJECT
    Q_PROPERTY(QString text READ name)

  public:
    explicit ElidedCheckBox(QWidget* parent = nullptr);
    QString name() const { return m_name; }
    void setName(const QString& name);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void applyElision();

    QString m_name;
};

} // namespace ombrel
