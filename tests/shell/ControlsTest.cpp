#include "shell/PreferencesWindow.h"
#include "shell/WelcomeView.h"
#include "shell/design/ChoiceBox.h"
#include "shell/design/ElidedCheckBox.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/Icon.h"
#include "shell/design/LongText.h"
#include "shell/design/MessageText.h"
#include "shell/design/SegmentedControl.h"
#include "shell/design/WrapLayout.h"
#include "tests/shell/Studio.h"

#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QHeaderView>
#include <QIcon>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextEdit>
#include <QTextLayout>

namespace ombrel {
namespace {

using namespace test;

// What can be worked with by keyboard or pointer and has no name for tests or screen readers.
std::string namelessControls(QWidget& below) {
    std::string faults;
    const auto all = below.findChildren<QWidget*>();
    for (QWidget* widget : all) {
        const bool isControl =
            qobject_cast<QAbstractButton*>(widget) || qobject_cast<QLineEdit*>(widget) ||
            qobject_cast<QComboBox*>(widget) || qobject_cast<QAbstractSlider*>(widget) ||
            qobject_cast<QAbstractSpinBox*>(widget) || qobject_cast<QPlainTextEdit*>(widget) ||
            qobject_cast<QAbstractItemView*>(widget);
        const QString name = widget->objectName();
        const auto isPartOf = [&](const auto* owner) { return owner != nullptr; };
        const bool isQtsOwn =
            name.startsWith(QLatin1String("qt_")) || qobject_cast<QScrollBar*>(widget) ||
            qobject_cast<QHeaderView*>(widget) ||
            isPartOf(qobject_cast<QLineEdit*>(widget->parent())) ||
            isPartOf(qobject_cast<QComboBox*>(widget->parent())) ||
            isPartOf(qobject_cast<QAbstractSpinBox*>(widget->parent())) ||
            widget->inherits("QComboBoxListView") || widget->inherits("QTableCornerButton");
        if (isControl && !isQtsOwn && (name.isEmpty() || widget->accessibleName().isEmpty())) {
            faults +=
                std::string(widget->metaObject()->className()) + " \"" + fromQt(name) + "\" in " +
                (widget->parent() ? fromQt(widget->parent()->objectName()) : std::string()) + "\n";
        }
    }
    return faults;
}

TEST(Controls, AllHaveNames) {
    Studio studio;
    auto& window = studio.newDocument();
    auto& state = *window.document().state();
    for (const auto& [tab, label] : rawValues(AppTab{})) {
        state.setSelectedTab(tab);
        const QByteArray name = "tab." + QByteArray(label.data()).toLower();
        ASSERT_TRUE(studio.until([&] { return isShown(window, name.constData()); }));
    }
    EXPECT_EQ(namelessControls(window), "");
    studio.application().showWelcome();
    EXPECT_EQ(namelessControls(*studio.application().welcomeWindow()), "");
    studio.application().showPreferences();
    EXPECT_EQ(namelessControls(*studio.application().preferencesWindow()), "");
}

TEST(SegmentedControl, IsReachedOnceByTabAndMovedByTheArrowKeys) {
    SegmentedControl control;
    control.setObjectName(QStringLiteral("kinds"));
    control.add(QStringLiteral("a"), QStringLiteral("A"));
    control.add(QStringLiteral("b"), QStringLiteral("B"));
    control.add(QStringLiteral("c"), QStringLiteral("C"));
    int chosen = -1;
    QObject::connect(&control, &SegmentedControl::chosen, [&](int index) { chosen = index; });
    control.show();
    control.activateWindow();
    QCoreApplication::processEvents();
    EXPECT_EQ(control.button(0)->focusPolicy(), Qt::TabFocus);
    EXPECT_EQ(control.button(1)->focusPolicy(), Qt::NoFocus);
    control.button(0)->setFocus(Qt::TabFocusReason);
    pressKey(*control.button(0), Qt::Key_Right);
    EXPECT_EQ(control.currentIndex(), 1);
    EXPECT_EQ(chosen, 1);
    EXPECT_EQ(control.button(1)->focusPolicy(), Qt::TabFocus);
    EXPECT_EQ(control.button(0)->focusPolicy(), Qt::NoFocus);
    control.setCurrentIndex(2);
    EXPECT_EQ(chosen, 1);
}

TEST(ElidedLabel, TellsTheWholeTextWhereItHasNoRoom) {
    ElidedLabel label(QStringLiteral("a name that is far too long for its place"));
    label.resize(60, 20);
    label.show();
    QCoreApplication::processEvents();
    EXPECT_EQ(label.toolTip(), toolTipText(label.text()));
    label.resize(1000, 20);
    QCoreApplication::processEvents();
    EXPECT_EQ(label.toolTip(), "");
}

TEST(ElidedCheckBox, TellsTheWholeNameWhereItHasNoRoom) {
    ElidedCheckBox box;
    box.setName(QStringLiteral("Salt & pepper, and a name that is far too long for its place"));
    box.resize(100, 24);
    box.show();
    QCoreApplication::processEvents();
    EXPECT_EQ(box.toolTip(), toolTipText(box.name()));
    EXPECT_EQ(box.accessibleName(), box.name());
    EXPECT_LE(box.minimumSizeHint().width(), 100);
    box.resize(1000, 24);
    QCoreApplication::processEvents();
    EXPECT_EQ(box.toolTip(), "");
    EXPECT_TRUE(box.QCheckBox::text().startsWith(QStringLiteral("Salt && pepper")));
}

TEST(MessageText, BreaksWordsThatAreLongerThanALine) {
    MessageText message;
    message.setText(QString(200, QLatin1Char('W')));
    message.resize(300, message.heightForWidth(300));
    message.show();
    QCoreApplication::processEvents();
    EXPECT_LE(message.minimumSizeHint().width(), 300);
    const auto& text = find<QTextEdit>(message, "messageText");
    EXPECT_GT(text.document()->firstBlock().layout()->lineCount(), 4);
    EXPECT_GE(text.height(), text.document()->size().height());
    message.setText(QStringLiteral("short"));
    EXPECT_LT(message.heightForWidth(300), 2 * text.fontMetrics().height());
}

TEST(ChoiceBox, NeedsLittleRoomForLongEntries) {
    ChoiceBox box;
    box.showEntries({QString(500, QLatin1Char('W')), QStringLiteral("b")});
    EXPECT_LE(box.minimumSizeHint().width(), 160);
    box.resize(120, 30);
    EXPECT_FALSE(box.grab().isNull());
}

TEST(WrapLayout, MakesColumnsOfOneWidthAndEvenRows) {
    QWidget box;
    auto* layout = new WrapLayout(10, 100, &box);
    QList<QWidget*> tiles;
    for (int i = 0; i < 4; ++i) {
        tiles.append(new QWidget);
        tiles.last()->setMinimumHeight(20);
        layout->addWidget(tiles.last());
    }
    box.resize(430, 200);
    box.show();
    layout->setGeometry(box.rect());
    EXPECT_EQ(tiles[3]->y(), tiles[0]->y());
    EXPECT_EQ(tiles[3]->width(), 100);
    layout->setGeometry({0, 0, 400, 200}); // room for three: two and two
    EXPECT_EQ(tiles[1]->y(), tiles[0]->y());
    EXPECT_EQ(tiles[2]->x(), tiles[0]->x());
    EXPECT_GT(tiles[2]->y(), tiles[0]->y());
    EXPECT_EQ(tiles[0]->width(), 195);
}

TEST(Icon, IsNothingWhereAButtonHasNoRoomForIt) {
    static int warnings = 0;
    const QtMessageHandler usual = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString&) { ++warnings; });
    EXPECT_TRUE(themeIcon(QStringLiteral("play")).pixmap(QSize(0, 0)).isNull());
    EXPECT_FALSE(themeIcon(QStringLiteral("play")).pixmap(QSize(16, 16)).isNull());
    qInstallMessageHandler(usual);
    EXPECT_EQ(warnings, 0);
}

TEST(LongText, IsCutWhereItHasNoEnd) {
    EXPECT_EQ(breakable(QStringLiteral("a few words")), QStringLiteral("a few words"));
    EXPECT_EQ(breakable(QString(30, QLatin1Char('x'))),
              QString(24, QLatin1Char('x')) + QChar(0x200B) + QString(6, QLatin1Char('x')));
    EXPECT_EQ(actionText(QStringLiteral("R&D\n desk")), QStringLiteral("R&&D desk"));
    EXPECT_EQ(actionText(QString(100, QLatin1Char('x'))),
              QString(59, QLatin1Char('x')) + QChar(0x2026));
    EXPECT_EQ(toolTipText(QStringLiteral("a < b & c")), QStringLiteral("a < b & c"));
    EXPECT_EQ(toolTipText(QStringLiteral("<b>x</b>")),
              QStringLiteral("<p style=\"white-space:pre-wrap\">&lt;b&gt;x&lt;/b&gt;</p>"));
    EXPECT_LT(toolTipText(QString(9000, QLatin1Char('x'))).size(), 1200);
}

} // namespace
} // namespace ombrel
