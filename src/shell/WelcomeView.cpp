#include "shell/WelcomeView.h"

#include "shell/Application.h"
#include "shell/QtText.h"
#include "shell/RecentProjects.h"
#include "shell/StudioServices.h"
#include "shell/TwoLineDelegate.h"
#include "shell/design/EmptyState.h"
#include "shell/design/Icon.h"
#include "shell/design/IconView.h"
#include "shell/design/Named.h"
#include "shell/design/Prompt.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"

#include <QCheckBox>
#include <QDateTime>
#include <QDesktopServices>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QUrl>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

constexpr int pathRole = Qt::UserRole + 1;

QString modifiedText(const std::optional<Date>& modified) {
    if (!modified) {
        return {};
    }
    const auto seconds =
        static_cast<qint64>(modified->secondsSinceReference + referenceDateSince1970);
    return QLocale().toString(QDateTime::fromSecsSinceEpoch(seconds),
                              QStringLiteral("d MMM yyyy, hh:mm"));
}

// A button with an icon, a title and a line that explains it.
QPushButton* makeAction(const QString& name, const QString& iconName, const QString& title,
                        const QString& subtitle) {
    auto* button = named(new QPushButton, name, title);
    button->setAccessibleDescription(subtitle);
    button->setProperty("kind", "action");
    button->setFocusPolicy(Qt::StrongFocus);
    auto* row = new QHBoxLayout(button);
    row->setContentsMargins(spacing::medium, spacing::small, spacing::medium, spacing::small);
    row->setSpacing(spacing::medium);
    row->addWidget(new IconView(iconName, Tone::accent, 26));
    auto* texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addWidget(new TextLabel(title, TextRole::strong));
    texts->addWidget(new TextLabel(subtitle, TextRole::caption, TextLabel::Ink::secondary));
    row->addLayout(texts, 1);
    return button;
}

} // namespace

WelcomeView::WelcomeView(Application& application) : m_application(application) {
    setObjectName(QStringLiteral("welcome"));
    setWindowTitle(tr("Welcome to Ombrel Studio"));
    setWindowFlag(Qt::WindowMaximizeButtonHint, false);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(makeLeft());
    row->addWidget(makeRight());
    setFixedSize(sizeHint());
    const auto command = [this](QKeySequence::StandardKey keys, auto run) {
        connect(new QShortcut(keys, this), &QShortcut::activated, this, run);
    };
    command(QKeySequence::New, [this] { makeProject(); });
    command(QKeySequence::Open, [this] { showOpenPanel(); });
    command(QKeySequence::Close, [this] { close(); });
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), this), &QShortcut::activated,
            &m_application, &Application::quit);
}

QWidget* WelcomeView::makeLeft() {
    auto* left = new QWidget;
    left->setFixedWidth(430);
    auto* column = new QVBoxLayout(left);
    column->setContentsMargins(spacing::page, spacing::page, spacing::page, spacing::large);
    column->setSpacing(spacing::tight);
    auto* mark = new QLabel;
    mark->setAccessibleName(tr("Ombrel Studio"));
    mark->setAlignment(Qt::AlignHCenter);
    mark->setPixmap(QIcon(QStringLiteral(":/icons/ombrel-studio.svg"))
                        .pixmap(QSize(96, 96), devicePixelRatioF()));
    column->addStretch(1);
    column->addWidget(mark);
    column->addSpacing(spacing::medium);
    auto* name = new TextLabel(tr("Ombrel Studio"), TextRole::title);
    name->setAlignment(Qt::AlignHCenter);
    column->addWidget(name);
    auto* version = new TextLabel(tr("Version ") + QStringLiteral(OMBREL_VERSION),
                                  TextRole::caption, TextLabel::Ink::secondary);
    version->setObjectName(QStringLiteral("welcome.version"));
    version->setAlignment(Qt::AlignHCenter);
    column->addWidget(version);
    column->addSpacing(spacing::wide);
    auto* newProject =
        makeAction(QStringLiteral("welcome.new"), QStringLiteral("document-plus"),
                   tr("New Project"), tr("Start from your sources and build an index"));
    auto* openProject =
        makeAction(QStringLiteral("welcome.open"), QStringLiteral("folder-open"),
                   tr("Open Existing Project\u2026"), tr("Choose a Ombrel project on your Mac"));
    column->addWidget(newProject);
    column->addWidget(openProject);
    column->addStretch(1);
    auto* shows = named(new QCheckBox(tr("Show this window when Ombrel Studio opens")),
                        QStringLiteral("welcome.showAtLaunch"),
                        tr("Show this window when Ombrel Studio opens"));
    shows->setChecked(m_application.services().settings().showWelcomeWindowAtLaunch());
    column->addWidget(shows, 0, Qt::AlignHCenter);
    connect(newProject, &QPushButton::clicked, this, [this] { makeProject(); });
    connect(openProject, &QPushButton::clicked, this, [this] { showOpenPanel(); });
    connect(shows, &QCheckBox::toggled, this, [this](bool isOn) {
        m_application.services().settings().setShowWelcomeWindowAtLaunch(isOn);
    });
    return left;
}

QWidget* WelcomeView::makeRight() {
    auto* right = new QFrame;
    right->setProperty("sidebar", "true");
    right->setFixedWidth(330);
    auto* column = new QVBoxLayout(right);
    column->setContentsMargins(spacing::medium, spacing::large, spacing::medium, spacing::medium);
    column->setSpacing(spacing::small);
    auto* title =
        new TextLabel(tr("RECENT PROJECTS"), TextRole::overline, TextLabel::Ink::secondary);
    title->setContentsMargins(spacing::small, 0, 0, 0);
    column->addWidget(title);
    m_body = new QStackedWidget;
    m_list = named(new QListWidget, QStringLiteral("welcome.recents"), tr("Recent projects"));
    m_list->setItemDelegate(new TwoLineDelegate(m_list));
    m_list->setMouseTracking(true);
    m_list->setContextMenuPolicy(Qt::CustomContextMenu);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->viewport()->setAutoFillBackground(false);
    m_body->addWidget(m_list);
    auto* none = new EmptyState(QStringLiteral("project"), tr("No recent projects"),
                                tr("Projects you create or open will show up here."));
    none->setObjectName(QStringLiteral("welcome.noRecents"));
    m_body->addWidget(none);
    column->addWidget(m_body, 1);
    right->setMinimumHeight(470);
    connect(m_list, &QListWidget::currentItemChanged, this, [this](QListWidgetItem* item) {
        m_selection =
            item ? std::optional(pathFromQt(item->data(pathRole).toString())) : std::nullopt;
    });
    // A double click, or Return.
    connect(m_list, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { open(pathFromQt(item->data(pathRole).toString())); });
    connect(m_list, &QWidget::customContextMenuRequested, this, &WelcomeView::openMenu);
    return right;
}

void WelcomeView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    refreshRecents();
}

void WelcomeView::refreshRecents() {
    const auto selected = m_selection;
    m_recents = loadRecentProjects(m_application.services().settings());
    m_list->clear();
    for (const RecentProject& recent : m_recents) {
        auto* item = new QListWidgetItem(themeIcon(QStringLiteral("index"), Tone::accent),
                                         toQt(recent.url.stem()), m_list);
        item->setData(Qt::UserRole, modifiedText(recent.modified));
        item->setData(pathRole, toQt(recent.url));
        item->setToolTip(tr("Double-click to open"));
        if (selected == recent.url) {
            m_list->setCurrentItem(item);
        }
    }
    m_body->setCurrentIndex(m_recents.empty() ? 1 : 0);
}

void WelcomeView::makeProject() {
    m_application.newDocument();
    close();
}

void WelcomeView::showOpenPanel() {
    m_application.showOpenPanel(this, [this](const QString& message) { showOpenError(message); });
}

void WelcomeView::open(const std::filesystem::path& path) {
    m_application.openDocument(path, [this](const QString& message) { showOpenError(message); });
}

void WelcomeView::showOpenError(const QString& message) {
    m_openErrorMessage = message;
    show();
    alert(this, tr("Couldn't open the project"), message, [this] { m_openErrorMessage.reset(); });
}

void WelcomeView::openMenu(const QPoint& where) {
    const QListWidgetItem* item = m_list->itemAt(where);
    if (!item) {
        return;
    }
    const QString path = item->data(pathRole).toString();
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setObjectName(QStringLiteral("welcome.menu"));
    connect(menu->addAction(themeIcon(QStringLiteral("folder-open")), tr("Open")),
            &QAction::triggered, this, [this, path] { open(pathFromQt(path)); });
    connect(menu->addAction(themeIcon(QStringLiteral("folder")), tr("Show in Finder")),
            &QAction::triggered, this, [path] {
                QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
            });
    menu->popup(m_list->viewport()->mapToGlobal(where));
}

void WelcomeView::mousePressEvent(QMouseEvent* event) {
    // The window can be dragged by its background.
    if (event->button() == Qt::LeftButton && windowHandle()) {
        windowHandle()->startSystemMove();
    }
    QWidget::mousePressEvent(event);
}

} // namespace ombrel
