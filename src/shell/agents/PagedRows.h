#pragma once

#include <QWidget>

class QPushButton;
class QToolButton;
class QVBoxLayout;

namespace ombrel {

class TextLabel;

// A list that the user edits row by row: its title, the rows, and a button that adds one. Of a long
// list it shows a page. What the rows are is told by the class that derives from it.
//
// Below the object name NAME of the list: NAME.title, NAME.0 and on for the rows of the page,
// NAME.add, NAME.empty, NAME.pages, NAME.previous and NAME.next.
class PagedRows : public QWidget {
    Q_OBJECT

  public:
    static constexpr int rowsOfPage = 40;

    struct Texts {
        QString title; // empty: none is shown
        QString add;
        QString empty;
    };

    void setTitle(const QString& title);

  protected:
    PagedRows(const QString& name, const Texts& texts, QWidget* parent);

    virtual int rowCount() const = 0;
    virtual QWidget* makeRow(const QString& name) = 0;
    virtual void showRow(QWidget* row, int index) = 0;
    // Adds one at the end.
    virtual void appendRow() = 0;

    // Shows the list as it is now.
    void showRows();
    // The index of what a row shows.
    int indexOf(const QWidget* row) const;

  private:
    int pageCount() const;
    void showPage(int page);
    void add();

    TextLabel* m_title;
    TextLabel* m_empty;
    QVBoxLayout* m_column;
    QPushButton* m_add;
    QWidget* m_pager;
    TextLabel* m_pages;
    QToolButton* m_previous;
    QToolButton* m_next;
    QList<QWidget*> m_rows;
    int m_page = 0;
};

} // namespace ombrel
