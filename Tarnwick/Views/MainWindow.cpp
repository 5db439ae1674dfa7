#include "MainWindow.hpp"

#include "AppModel.hpp"
#include "Breadcrumb.hpp"
#include "ChangesPane.hpp"
#include "ColorMapStore.hpp"
#include "Agent/AgentHelp.hpp"
#include "Favorites.hpp"
#include "FileManagerLink.hpp"
#include "FindBar.hpp"
#include "FreeSpaceDialog.hpp"
#include "History/HistoryStore.hpp"
#include "HistoryFeed.hpp"
#include "HistoryRecorder.hpp"
#include "History/ScanRecorder.hpp"
#include "InspectorView.hpp"
#include "ItemMenu.hpp"
#include "ListPane.hpp"
#include "MapLegend.hpp"
#include "OffThread.hpp"
#include "Platform/MountTable.hpp"
#include "Platform/UserDefaults.hpp"
#include "Platform/VolumeIdentity.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "SavedDayWindow.hpp"
#include "SettingsDialog.hpp"
#include "SourceSidebar.hpp"
#include "SearchPane.hpp"
#include "StartView.hpp"
#include "SunburstView.hpp"
#include "ToolbarIcons.hpp"
#include "TerminalLauncher.hpp"
#include "UnreadableSheet.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

#include <cstdlib>

namespace tarnwick {

namespace {

// Disks' free space changes while the window is open.
constexpr int sidebarRefreshMilliseconds = 30'000;

QWidget* card(QWidget* content, const char* name)
{
    auto* frame = new QWidget();
    frame->setObjectName(name);
    frame->setAttribute(Qt::WA_StyledBackground);
    auto* layout = new QVBoxLayout(frame);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->addWidget(content);
    return frame;
}

}

MainWindow::Environment MainWindow::Environment::standard()
{
    const char* home = std::getenv("HOME");
    return Environment {
        home && *home ? std::string(home) : std::string("/"),
        UserDefaults::standardPath(),
    };
}

MainWindow::MainWindow(AppModel& model, Environment environment, QWidget* parent)
    : QMainWindow(parent)
    , m_model(model)
    , m_environment(std::move(environment))
    , m_defaults(std::make_unique<UserDefaults>(m_environment.defaultsPath))
    , m_favorites(std::make_unique<Favorites>(*m_defaults))
    , m_colors(new ColorMapStore(this))
    , m_history(new HistoryFeed(m_environment.history, this))
    , m_sidebar(new SourceSidebar({ m_environment.home, m_environment.history }, *m_favorites))
    , m_pages(new QStackedWidget())
    , m_start(new StartView())
    , m_map(new SunburstView())
    , m_legend(new MapLegend())
    , m_list(new ListPane())
    , m_inspector(new InspectorView())
    , m_breadcrumb(new Breadcrumb())
    , m_colorModes(new QComboBox())
    , m_find(new FindBar())
    , m_status(new QLabel())
    , m_changes(new ChangesPane(*m_history))
    , m_listOrChanges(new QStackedWidget())
    , m_unreadable(new QPushButton())
    , m_fileManager(new FileManagerLink(this))
    , m_search(new SearchPane())
    , m_historyProblem(new QLabel())
{
    setWindowTitle(ViewTexts::appName);
    // 1280 x 800 where the screen has room, else what it has.
    QSize size(1280, 800);
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        size = size.boundedTo(screen->availableSize());
    resize(size);
    buildToolbar();
    buildMenus();

    m_pages->addWidget(m_start);
    m_pages->addWidget(buildWorkspace());
    auto* split = new QSplitter(Qt::Horizontal);
    split->setObjectName("mainSplit");
    split->setChildrenCollapsible(false);
    split->setHandleWidth(1);
    split->addWidget(m_sidebar);
    split->addWidget(m_pages);
    split->setStretchFactor(1, 1);
    split->setSizes({ 230, 1050 });
    m_sidebar->setMinimumWidth(190);
    setCentralWidget(split);
    statusBar()->addWidget(m_status, 1);
    m_unreadable->setObjectName("unreadable");
    m_unreadable->setFlat(true);
    m_unreadable->setCursor(Qt::PointingHandCursor);
    m_unreadable->setStyleSheet("QPushButton#unreadable { border: none; padding: 2px 10px; color: #B45309; background: transparent; }"
                                "QPushButton#unreadable:hover { color: #92400E; text-decoration: underline; }");
    m_unreadable->hide();
    statusBar()->addPermanentWidget(m_unreadable);
    m_historyProblem->setStyleSheet("QLabel { padding: 2px 10px; color: #B45309; }");
    m_historyProblem->setMaximumWidth(520);
    m_historyProblem->hide();
    statusBar()->addPermanentWidget(m_historyProblem);
    statusBar()->setSizeGripEnabled(false);

    connect(m_sidebar, &SourceSidebar::sourceChosen, this, &MainWindow::choose);
    connect(m_sidebar, &SourceSidebar::addFavoriteRequested, this, &MainWindow::addFavorite);
    connect(m_start, &StartView::sourceChosen, this, &MainWindow::choose);
    connect(m_start, &StartView::chooseFolderRequested, this, &MainWindow::chooseFolder);
    connect(m_map, &SunburstView::folderOpened, this, [this](NodeID folder) { m_model.open(folder); });
    connect(m_map, &SunburstView::nodeSelected, this, [this](std::optional<NodeID> node) { m_model.select(node); });
    connect(m_map, &SunburstView::upRequested, this, &MainWindow::goUp);
    connect(m_map, &SunburstView::stopRequested, this, [this] { m_model.cancelScan(); });
    connect(m_map, &SunburstView::previewShown, this, &MainWindow::showPreview);
    connect(m_list, &ListPane::nodeSelected, this, [this](std::optional<NodeID> node) { m_model.select(node); });
    connect(m_list, &ListPane::folderOpened, this, [this](NodeID folder) { m_model.open(folder); });
    connect(m_breadcrumb, &Breadcrumb::folderChosen, this, [this](NodeID folder) { m_model.open(folder); });
    connect(m_map, &SunburstView::itemMenuRequested, this, &MainWindow::showItemMenu);
    connect(m_list, &ListPane::itemMenuRequested, this, &MainWindow::showItemMenu);
    connect(m_find, &FindBar::searchRequested, this, &MainWindow::search);
    connect(m_search, &SearchPane::itemChosen, this, &MainWindow::reveal);
    connect(m_search, &SearchPane::closeRequested, this, [this] { showSearch(false); });
    connect(m_colors, &ColorMapStore::ready, this, &MainWindow::refresh);
    connect(m_sidebar, &SourceSidebar::freeSpaceRequested, this, &MainWindow::openFreeSpace);
    connect(m_sidebar, &SourceSidebar::savedDayRequested, this, &MainWindow::openSavedDay);
    connect(m_unreadable, &QPushButton::clicked, this, &MainWindow::openUnreadable);
    connect(m_changes, &ChangesPane::changesShown, this, [this](std::shared_ptr<const SunburstView::ChangeMap> changes, const QString& since) {
        m_map->setChanges(m_showChanges->isChecked() ? std::move(changes) : nullptr, since);
    });
    connect(m_changes, &ChangesPane::placeChosen, this, [this](const QString& path) {
        const auto& result = m_model.result();
        if (!result || m_model.runningScan())
            return;
        if (auto node = result->tree->node(path.toStdString()); node && isContainer(result->tree->kind(*node)))
            m_model.open(*node);
    });

    // A place saved for the first time joins the sidebar's history.
    connect(m_history, &HistoryFeed::changed, m_sidebar, &SourceSidebar::refresh);
    connect(m_history, &HistoryFeed::changed, this, &MainWindow::updateHistoryProblem);
    updateHistoryProblem();
    auto* sidebarTimer = new QTimer(this);
    sidebarTimer->setInterval(sidebarRefreshMilliseconds);
    connect(sidebarTimer, &QTimer::timeout, m_sidebar, &SourceSidebar::refresh);
    connect(m_sidebar, &SourceSidebar::sourcesChanged, this, &MainWindow::updateStartChoices);
    sidebarTimer->start();

    // The model outlives no window, but observers cannot be removed: a guard keeps a closed
    // window from being called.
    QPointer<MainWindow> guard(this);
    m_model.addObserver([guard] {
        if (guard)
            guard->refresh();
    });
    m_model.addResultObserver([guard](const AppModel::Result&) {
        if (guard)
            guard->m_sidebar->refresh();
    });
    refresh();
}

MainWindow::~MainWindow() = default;

void MainWindow::buildToolbar()
{
    auto* bar = addToolBar(QStringLiteral("Navigation"));
    bar->setObjectName("toolbar");
    bar->setMovable(false);
    bar->setFloatable(false);
    bar->setIconSize(QSize(18, 18));
    bar->setContextMenuPolicy(Qt::PreventContextMenu);
    m_back = bar->addAction(ToolbarIcons::back(), ViewTexts::back, this, &MainWindow::goBack);
    m_back->setShortcut(QKeySequence::Back);
    m_forward = bar->addAction(ToolbarIcons::forward(), ViewTexts::forward, this, &MainWindow::goForward);
    m_forward->setShortcut(QKeySequence::Forward);
    m_up = bar->addAction(ToolbarIcons::up(), ViewTexts::up, this, &MainWindow::goUp);
    m_up->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Up));
    bar->addSeparator();
    bar->addWidget(m_breadcrumb);
    m_breadcrumb->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);

    bar->addWidget(m_find);
    auto* label = new QLabel(QStringLiteral("  ") + ViewTexts::colorBy + QStringLiteral(" "));
    label->setStyleSheet("color: #6B7280;");
    bar->addWidget(label);
    m_colorModes->setObjectName("colorMode");
    for (ColorMode mode : allColorModes) {
        std::string_view title = ColorModes::title(mode);
        m_colorModes->addItem(QString::fromUtf8(title.data(), static_cast<qsizetype>(title.size())), static_cast<int>(mode));
    }
    connect(m_colorModes, &QComboBox::activated, this, [this](int index) {
        m_model.setColorMode(static_cast<ColorMode>(m_colorModes->itemData(index).toInt()));
    });
    bar->addWidget(m_colorModes);
    bar->addSeparator();
    m_rescan = bar->addAction(ToolbarIcons::rescan(), ViewTexts::rescan, this, [this] { m_model.rescan(); });
    m_rescan->setShortcut(QKeySequence::Refresh);
    m_stop = bar->addAction(ToolbarIcons::stop(), ViewTexts::stop, this, [this] { m_model.cancelScan(); });
    bar->addAction(ToolbarIcons::folder(), ViewTexts::chooseFolder, this, &MainWindow::chooseFolder);
    bar->addSeparator();
    m_showChanges = bar->addAction(ToolbarIcons::changes(), ViewTexts::showChanges, this, &MainWindow::showChanges);
    m_showChanges->setCheckable(true);
    bar->addAction(ToolbarIcons::settings(), ViewTexts::settings, this, [this] { openSettings(); });
    bar->setToolButtonStyle(Qt::ToolButtonIconOnly);
}

void MainWindow::buildMenus()
{
    QMenu* file = menuBar()->addMenu(ViewTexts::fileMenu);
    file->addAction(ViewTexts::chooseFolder, QKeySequence::Open, this, &MainWindow::chooseFolder);
    // The disks as the sidebar lists them when the menu opens, free space and all.
    QMenu* disks = file->addMenu(ViewTexts::scanDisk);
    connect(disks, &QMenu::aboutToShow, this, [this, disks] {
        disks->clear();
        for (const SourceSidebar::Source& source : m_sidebar->sources()) {
            if (source.kind != SourceSidebar::Kind::disk)
                continue;
            QString path = QString::fromStdString(source.path);
            disks->addAction(source.title + QStringLiteral(" (") + path + QStringLiteral(")"), this, [this, path] { choose(path); });
        }
    });
    file->addAction(m_rescan);
    file->addAction(m_stop);
    file->addSeparator();
    file->addAction(ViewTexts::closeWindow, QKeySequence::Close, this, &QWidget::close);
    file->addAction(ViewTexts::quit, QKeySequence::Quit, qApp, &QCoreApplication::quit);

    QMenu* edit = menuBar()->addMenu(ViewTexts::editMenu);
    edit->addAction(ViewTexts::copyPath, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C), this, [this] {
        const auto& result = m_model.result();
        if (result && !m_model.runningScan())
            QGuiApplication::clipboard()->setText(QString::fromStdString(result->tree->path(m_model.selection().value_or(m_model.openFolder()))));
    });
    edit->addAction(ViewTexts::find, QKeySequence::Find, this, [this] {
        m_find->setFocus(Qt::ShortcutFocusReason);
        m_find->selectAll();
    });
    edit->addSeparator();
    edit->addAction(ViewTexts::settings, QKeySequence::Preferences, this, [this] { openSettings(); });

    QMenu* view = menuBar()->addMenu(ViewTexts::viewMenu);
    QMenu* colors = view->addMenu(ViewTexts::colorMenu);
    int number = 0;
    for (ColorMode mode : allColorModes) {
        std::string_view title = ColorModes::title(mode);
        QAction* action = colors->addAction(QString::fromUtf8(title.data(), static_cast<qsizetype>(title.size())), this,
            [this, mode] { m_model.setColorMode(mode); });
        action->setShortcut(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + number++)));
    }
    view->addSeparator();
    m_showChanges->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_D));
    view->addAction(m_showChanges);
    view->addAction(ViewTexts::freeSpaceMenu, this, [this] {
        const auto& result = m_model.result();
        std::string disk = result ? ScopeResolver::realPath(result->scope.scanRoot) : std::string("/");
        if (auto mounts = MountTable::read())
            if (const MountEntry* mount = MountTable::holding(*mounts, disk))
                disk = mount->mountPoint;
        openFreeSpace(QString::fromStdString(disk));
    });
    m_showUnreadable = view->addAction(ViewTexts::unreadablePlaces, this, &MainWindow::openUnreadable);
    m_showUnreadable->setEnabled(false);

    QMenu* go = menuBar()->addMenu(ViewTexts::goMenu);
    go->addAction(m_back);
    go->addAction(m_forward);
    m_up->setShortcuts({ QKeySequence(Qt::ALT | Qt::Key_Up), QKeySequence(Qt::Key_Backspace) });
    go->addAction(m_up);
    m_home = go->addAction(ViewTexts::home, QKeySequence(Qt::ALT | Qt::Key_Home), this, [this] {
        if (m_model.result() && !m_model.runningScan())
            m_model.open(NodeID::root());
    });
    // The days the history keeps of the place on screen, as the sidebar last read them.
    go->addSeparator();
    m_savedDays = go->addMenu(ViewTexts::savedDays);
    connect(m_savedDays, &QMenu::aboutToShow, this, [this] {
        m_savedDays->clear();
        const auto& result = m_model.result();
        if (!result || !m_sidebar->addSavedDays(*m_savedDays, result->scope.scanRoot))
            m_savedDays->addAction(ViewTexts::noSavedDays)->setEnabled(false);
    });

    QMenu* help = menuBar()->addMenu(ViewTexts::helpMenu);
    help->addAction(ViewTexts::commandLineHelp, QKeySequence::HelpContents, this, [this] {
        QMessageBox box(this);
        box.setWindowTitle(ViewTexts::commandLineHelp);
        box.setText(QString::fromStdString(AgentHelp::general("tarnwick")));
        box.setTextInteractionFlags(Qt::TextSelectableByMouse);
        box.exec();
    });
    help->addAction(ViewTexts::aboutApp, this, [this] {
        QMessageBox::about(this, ViewTexts::aboutApp,
            ViewTexts::appName + QStringLiteral(" ") + QStringLiteral(TARNWICK_VERSION) + QStringLiteral("\n") + ViewTexts::aboutText);
    });
}

ItemMenu::Actions MainWindow::itemActions()
{
    ItemMenu::Actions actions;
    actions.open = [this](NodeID folder) { m_model.open(folder); };
    actions.select = [this](NodeID item) { reveal(item); };
    actions.goUp = [this](NodeID item) {
        const auto& current = m_model.result();
        if (current)
            if (auto parent = current->tree->parent(item); parent && current->tree->parent(*parent))
                reveal(*parent);
    };
    actions.showInFileManager = [this](const QString& path) { m_fileManager->show(path); };
    actions.openTerminal = [this](const QString& folder) {
        if (!TerminalLauncher::open(folder))
            statusBar()->showMessage(ViewTexts::noTerminal, 8000);
    };
    // A scan of its own, even of a folder the current scan holds, which choosing would open.
    actions.scan = [this](const QString& folder) {
        if (auto scope = ScopeResolver::resolve(folder.toStdString()))
            m_model.scan(*scope);
        else
            statusBar()->showMessage(QString::fromStdString(std::string(scope.error().title())), 8000);
    };
    actions.addFavorite = [this](const QString& folder) {
        m_favorites->add(folder.toStdString());
        m_sidebar->refresh();
    };
    return actions;
}

QMenu* MainWindow::itemMenu(NodeID node)
{
    const auto& result = m_model.result();
    if (!result || m_model.runningScan() || node.value < 0 || node.value >= result->tree->count())
        return nullptr;
    return ItemMenu::make(this, result->tree, node, itemActions());
}

void MainWindow::showItemMenu(NodeID node, const QPoint& at)
{
    if (QMenu* menu = itemMenu(node))
        menu->popup(at);
}

void MainWindow::reveal(NodeID node)
{
    const auto& result = m_model.result();
    if (!result || m_model.runningScan())
        return;
    if (std::optional<NodeID> parent = result->tree->parent(node))
        m_model.open(*parent);
    m_model.select(node);
}

QWidget* MainWindow::buildWorkspace()
{
    auto* mapColumn = new QWidget();
    auto* mapLayout = new QVBoxLayout(mapColumn);
    mapLayout->setContentsMargins(12, 12, 6, 12);
    mapLayout->setSpacing(10);
    auto* mapArea = new QWidget();
    auto* mapAreaLayout = new QVBoxLayout(mapArea);
    mapAreaLayout->setContentsMargins(8, 8, 8, 4);
    mapAreaLayout->setSpacing(0);
    mapAreaLayout->addWidget(m_map, 1);
    mapAreaLayout->addWidget(m_legend);
    mapLayout->addWidget(card(mapArea, "card"), 1);

    auto* side = new QSplitter(Qt::Vertical);
    side->setObjectName("sideSplit");
    side->setChildrenCollapsible(false);
    side->setHandleWidth(10);
    m_listOrChanges->addWidget(m_list);
    m_listOrChanges->addWidget(m_changes);
    m_listOrChanges->addWidget(m_search);
    side->addWidget(card(m_listOrChanges, "card"));
    side->addWidget(card(m_inspector, "card"));
    side->setStretchFactor(0, 1);
    side->setStretchFactor(1, 1);
    auto* sideColumn = new QWidget();
    auto* sideLayout = new QVBoxLayout(sideColumn);
    sideLayout->setContentsMargins(6, 12, 12, 12);
    sideLayout->addWidget(side);

    auto* workspace = new QSplitter(Qt::Horizontal);
    workspace->setObjectName("workspace");
    workspace->setChildrenCollapsible(false);
    workspace->setHandleWidth(1);
    workspace->addWidget(mapColumn);
    workspace->addWidget(sideColumn);
    workspace->setStretchFactor(0, 5);
    workspace->setStretchFactor(1, 4);
    workspace->setSizes({ 560, 470 });
    return workspace;
}

bool MainWindow::isBusy() const
{
    return m_colors->isMaking() || m_legendsPending > 0 || m_map->isDrawing();
}

bool MainWindow::choose(const QString& path)
{
    auto chosen = m_model.choose(path.toStdString());
    if (!chosen) {
        m_start->setFailure(QString::fromStdString(chosen.error().text));
        statusBar()->showMessage(QString::fromStdString(chosen.error().text), 8000);
        return false;
    }
    return true;
}

void MainWindow::chooseFolder()
{
    QString path = QFileDialog::getExistingDirectory(this, ViewTexts::chooseFolderTitle, QString::fromStdString(m_environment.home));
    if (!path.isEmpty())
        choose(path);
}

void MainWindow::addFavorite()
{
    QString path = QFileDialog::getExistingDirectory(this, ViewTexts::addFavorite, QString::fromStdString(m_environment.home));
    if (path.isEmpty())
        return;
    m_favorites->add(path.toStdString());
    m_sidebar->refresh();
}

std::optional<VolumeCapacity> MainWindow::capacityOf(const std::shared_ptr<const ScanTree>& tree)
{
    if (tree.get() == m_capacityTree)
        return m_capacity;
    m_capacityTree = tree.get();
    m_capacity.reset();
    const auto& result = m_model.result();
    // Free and unaccounted space belong on the map only when a whole disk is shown.
    if (result && result->tree == tree && result->scope.kind != SourceKind::folder) {
        if (auto space = VolumeIdentity::space(result->scope.scanRoot))
            m_capacity = VolumeCapacity { space->total, space->available, space->reserved };
    }
    return m_capacity;
}

void MainWindow::refresh()
{
    ColorMode mode = m_model.colorMode();
    int modeIndex = m_colorModes->findData(static_cast<int>(mode));
    if (modeIndex != m_colorModes->currentIndex())
        m_colorModes->setCurrentIndex(modeIndex);
    if (m_model.runningScan()) {
        showScan();
    } else if (m_model.result()) {
        showResult();
    } else {
        m_map->clear();
        m_list->clear();
        m_inspector->clear();
        m_legend->clear();
        m_changes->clear();
        updateUnreadable();
        m_breadcrumb->showPath(nullptr, NodeID::root());
        updateStartChoices();
        const auto& failure = m_model.lastFailure();
        m_start->setFailure(failure ? QString::fromStdString(failure->message) : QString());
        m_pages->setCurrentWidget(m_start);
        m_status->clear();
        setWindowTitle(ViewTexts::appName);
    }
    bool scanning = m_model.runningScan().has_value();
    m_stop->setEnabled(scanning);
    m_rescan->setEnabled(!scanning && m_model.result().has_value());
    m_back->setEnabled(!scanning && !m_backStack.empty());
    m_forward->setEnabled(!scanning && !m_forwardStack.empty());
    m_up->setEnabled(!scanning && m_model.result() && m_model.openFolder() != NodeID::root());
    m_home->setEnabled(m_up->isEnabled());
}

// The start page offers the disks and the home folder as the sidebar last read them.
void MainWindow::updateStartChoices()
{
    std::vector<StartView::Choice> choices;
    for (const SourceSidebar::Source& source : m_sidebar->sources()) {
        if (source.kind == SourceSidebar::Kind::disk)
            choices.push_back({ source.title, ViewTexts::freeOf(ViewFormat::size(source.available), ViewFormat::size(source.total)), source.path });
        else if (source.kind == SourceSidebar::Kind::home)
            choices.push_back({ source.title, QString::fromStdString(source.path), source.path });
    }
    m_start->setChoices(choices);
}

void MainWindow::showScan()
{
    const auto& running = *m_model.runningScan();
    m_pages->setCurrentIndex(1);
    std::optional<VolumeCapacity> capacity;
    if (running.scope.kind != SourceKind::folder) {
        if (auto space = VolumeIdentity::space(running.scope.scanRoot))
            capacity = VolumeCapacity { space->total, space->available, space->reserved };
    }
    QString root = QString::fromStdString(ScopeResolver::displayPath(running.scope.scanRoot));
    const ScanTree* resultTree = m_model.result() ? m_model.result()->tree.get() : nullptr;
    bool rescan = resultTree && resultTree->rootPath() == running.scope.scanRoot;
    QPointer<MainWindow> guard(this);
    auto colors = [guard, resultTree](const std::shared_ptr<const ScanTree>& tree) {
        if (!guard)
            return std::shared_ptr<const ColorMap>();
        // Only the latest preview and the finished result keep their colours.
        guard->m_colors->keepOnly({ tree.get(), resultTree });
        return guard->m_colors->colors(tree, guard->m_model.colorMode());
    };
    m_map->watchScan(running.scanner->progress(), root, capacity, colors, rescan ? SunburstView::Start::keepShown : SunburstView::Start::empty);
    // Another colour mode, or colours just made, show on the preview at once, not at the next one.
    m_map->recolor();
    m_list->setInteractive(false);
    if (!m_map->tree()) {
        m_list->clear();
        m_inspector->clear();
    } else {
        m_list->setColors(m_map->colors());
    }
    updateLegend(m_map->colors(), m_map->tree(), NodeID::root());
    m_changes->clear();
    updateUnreadable();
    m_breadcrumb->showPath(nullptr, NodeID::root());
    m_sidebar->setCurrentPath(running.scope.scanRoot);
    m_status->setText(ViewTexts::scanning + QStringLiteral(" ") + root);
    // The desktop adds the app's name after the window's own title.
    setWindowTitle(ViewTexts::scanning + QStringLiteral(" ") + root);
}

// The list and the inspector show the preview's top, sizes so far, while the map fills in.
void MainWindow::showPreview()
{
    const auto& tree = m_map->tree();
    if (!m_model.runningScan() || !tree)
        return;
    m_list->showFolder(tree, NodeID::root());
    m_list->setColors(m_map->colors());
    m_inspector->showNode(tree, NodeID::root(), nullptr, nullptr);
    updateLegend(m_map->colors(), tree, NodeID::root());
}

void MainWindow::showResult()
{
    const AppModel::Result& result = *m_model.result();
    const std::shared_ptr<const ScanTree>& tree = result.tree;
    NodeID open = m_model.openFolder();
    std::optional<NodeID> selection = m_model.selection();
    m_pages->setCurrentIndex(1);
    m_map->endScanWatch();
    m_list->setInteractive(true);
    m_colors->keepOnly({ tree.get() });
    updateNavigation(tree, open);

    // A completed scan comes with every mode's colours; a stopped one is coloured here.
    std::shared_ptr<const ColorMap> colors =
        result.analysis ? result.analysis->colors(m_model.colorMode()) : m_colors->colors(tree, m_model.colorMode());
    m_map->showTree(tree, open, open == NodeID::root() ? capacityOf(tree) : std::nullopt);
    m_map->setColors(colors);
    m_map->setSelection(selection);
    m_list->showFolder(tree, open);
    m_list->setColors(colors);
    m_list->setSelection(selection);
    m_inspector->showNode(tree, selection.value_or(open), result.analysis ? result.analysis->content() : nullptr, ownersOf(tree));
    m_inspector->setColors(colors);
    m_breadcrumb->showPath(tree, open);
    m_sidebar->setCurrentPath(tree->rootPath());
    updateLegend(colors, tree, open);
    if (m_pendingComparison && m_pendingComparison->first == tree->rootPath()) {
        HistoryEntry day = m_pendingComparison->second;
        m_pendingComparison.reset();
        showChanges(true);
        m_changes->compareSince(day);
    }
    updateChanges();
    updateUnreadable();

    QString root = QString::fromStdString(ScopeResolver::displayPath(tree->rootPath()));
    setWindowTitle(root);
    QString status = ViewFormat::count(tree->count() - 1) + QStringLiteral(" items · ") + ViewFormat::size(*tree, NodeID::root())
        + QStringLiteral(" · scanned ") + ViewFormat::date(result.finishedAt);
    if (!colors)
        status += QStringLiteral(" · ") + ViewTexts::coloring;
    m_status->setText(status);
}

// A save that failed stays in sight until one succeeds; a rebuilt index is told for the
// rest of the session, as the status command tells it.
void MainWindow::updateHistoryProblem()
{
    std::optional<std::string> problem;
    if (HistoryStore* store = m_history->store()) {
        if (auto error = store->saveError())
            problem = std::string(HistoryRecorder::notSavedPrefix) + error->message();
        else
            problem = store->recoveryNotice();
    }
    QString text = problem ? QString::fromStdString(*problem) : QString();
    m_historyProblem->setToolTip(text);
    m_historyProblem->setText(m_historyProblem->fontMetrics().elidedText(text, Qt::ElideMiddle, m_historyProblem->maximumWidth() - 20));
    m_historyProblem->setVisible(problem.has_value());
}

QString MainWindow::historyProblem() const
{
    return m_historyProblem->toolTip();
}

std::shared_ptr<const OwnerMap> MainWindow::ownersOf(const std::shared_ptr<const ScanTree>& tree) const
{
    const auto& result = m_model.result();
    if (result && result->tree == tree && result->analysis)
        return result->analysis->owners();
    return m_colors->owners(tree.get());
}

void MainWindow::updateLegend(const std::shared_ptr<const ColorMap>& colors, const std::shared_ptr<const ScanTree>& tree, NodeID root)
{
    if (!colors || !tree) {
        m_legend->clear();
        m_legendColors = nullptr;
        return;
    }
    if (colors.get() == m_legendColors && root == m_legendRoot)
        return;
    m_legendColors = colors.get();
    m_legendRoot = root;
    std::shared_ptr<const OwnerMap> owners = ownersOf(tree);
    std::optional<VolumeCapacity> capacity = root == NodeID::root() ? capacityOf(tree) : std::nullopt;
    std::uint64_t request = ++m_legendRequest;
    ++m_legendsPending;
    OffThread::run<LegendContent>(
        this, [colors, tree, root, owners, capacity] { return LegendContent::make(*colors, *tree, root, owners.get(), capacity); },
        [this, request](LegendContent content) {
            --m_legendsPending;
            if (request == m_legendRequest)
                m_legend->setContent(std::move(content));
        });
}

void MainWindow::updateNavigation(const std::shared_ptr<const ScanTree>& tree, NodeID open)
{
    // Results of another scan name nodes that are not this one's.
    if (m_search->tree() && m_search->tree() != tree)
        showSearch(false);
    if (tree != m_navigationTree) {
        m_navigationTree = tree;
        m_backStack.clear();
        m_forwardStack.clear();
        m_lastOpen = open;
        return;
    }
    if (open == m_lastOpen)
        return;
    if (!m_navigating) {
        m_backStack.push_back(m_lastOpen);
        m_forwardStack.clear();
    }
    m_lastOpen = open;
}

void MainWindow::goBack()
{
    if (m_backStack.empty() || !m_model.result())
        return;
    NodeID target = m_backStack.back();
    m_backStack.pop_back();
    m_forwardStack.push_back(m_model.openFolder());
    m_navigating = true;
    m_model.open(target);
    m_navigating = false;
}

void MainWindow::goForward()
{
    if (m_forwardStack.empty() || !m_model.result())
        return;
    NodeID target = m_forwardStack.back();
    m_forwardStack.pop_back();
    m_backStack.push_back(m_model.openFolder());
    m_navigating = true;
    m_model.open(target);
    m_navigating = false;
}

void MainWindow::goUp()
{
    const auto& result = m_model.result();
    if (!result || m_model.runningScan())
        return;
    if (std::optional<NodeID> parent = result->tree->parent(m_model.openFolder()))
        m_model.open(*parent);
}

void MainWindow::search(const QString& text)
{
    const auto& result = m_model.result();
    if (!result || m_model.runningScan() || (text.trimmed().isEmpty() && m_listOrChanges->currentWidget() != m_search))
        return;
    showSearch(true);
    // Below the folder open when the search started; choosing a result moves the map, not it.
    NodeID below = m_search->tree() == result->tree && m_listOrChanges->currentWidget() == m_search ? m_searchRoot : m_model.openFolder();
    m_searchRoot = below;
    m_search->search(result->tree, below, text);
}

void MainWindow::showSearch(bool shown)
{
    if (shown) {
        if (m_showChanges->isChecked())
            showChanges(false);
        m_listOrChanges->setCurrentWidget(m_search);
    } else if (m_listOrChanges->currentWidget() == m_search) {
        m_search->clear();
        m_listOrChanges->setCurrentWidget(m_list);
    }
}

void MainWindow::showChanges(bool shown)
{
    m_showChanges->setChecked(shown);
    m_listOrChanges->setCurrentWidget(shown ? static_cast<QWidget*>(m_changes) : m_list);
    if (!shown)
        m_map->setChanges(nullptr, {});
    updateChanges();
}

// The comparison follows the result and its open folder while the changes are shown.
void MainWindow::updateChanges()
{
    const auto& result = m_model.result();
    if (!m_showChanges->isChecked() || m_model.runningScan() || !result) {
        if (!result || m_model.runningScan())
            m_changes->clear();
        return;
    }
    bool saved = result->status.kind == ScanOutcome::Status::Kind::completed;
    m_changes->showScan(result->tree, m_model.openFolder(), result->finishedAt, saved);
}

// The status bar offers what could not be read of the current result.
void MainWindow::updateUnreadable()
{
    const auto& result = m_model.result();
    const ScanTree* tree = result && !m_model.runningScan() ? result->tree.get() : nullptr;
    if (tree == m_unreadableTree)
        return;
    m_unreadableTree = tree;
    std::size_t issues = tree ? tree->issues().size() : 0;
    m_unreadable->setVisible(issues > 0);
    m_showUnreadable->setEnabled(issues > 0);
    m_unreadable->setText(issues == 1 ? ViewTexts::unreadableOne : ViewTexts::unreadableCount(ViewFormat::count(static_cast<std::int64_t>(issues))));
}

SavedDayWindow* MainWindow::openSavedDay(const QString& path, qint64 entryID)
{
    if (!m_environment.history)
        return nullptr;
    auto* day = new SavedDayWindow(*m_environment.history, path.toStdString(), entryID, this);
    day->setAttribute(Qt::WA_DeleteOnClose);
    connect(day, &SavedDayWindow::compareRequested, this, &MainWindow::compareWithDay);
    day->show();
    return day;
}

void MainWindow::compareWithDay(const QString& path, const HistoryEntry& day)
{
    bringToFront();
    const auto& result = m_model.result();
    std::string place = ScopeResolver::realPath(path.toStdString());
    if (result && !m_model.runningScan() && result->tree->rootPath() == place) {
        m_model.open(NodeID::root());
        showChanges(true);
        m_changes->compareSince(day);
        return;
    }
    m_pendingComparison = std::pair { place, day };
    if (!choose(path))
        m_pendingComparison.reset();
}

void MainWindow::openUnreadable()
{
    const auto& result = m_model.result();
    if (!result)
        return;
    auto* sheet = new UnreadableSheet(result->tree, NodeID::root(), m_environment.home, this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->setWindowModality(Qt::WindowModal);
    sheet->show();
}

void MainWindow::openFreeSpace(const QString& diskPath)
{
    std::string path = diskPath.toStdString();
    QString name = path == "/" ? QStringLiteral("System Disk") : diskPath.section('/', -1, -1, QString::SectionSkipEmpty);
    auto* dialog = new FreeSpaceDialog(name, ScanRecorder::sourceFor(ScopeResolver::realPath(path)), *m_history, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

void MainWindow::bringToFront()
{
    showNormal();
    raise();
    activateWindow();
}

SettingsDialog* MainWindow::openSettings(int page)
{
    if (!m_settings) {
        m_settings = new SettingsDialog(m_environment.defaultsPath, *m_history, m_environment.dailyScans, this);
        connect(m_settings, &SettingsDialog::menuBarChanged, this, &MainWindow::menuBarSettingsChanged);
        connect(m_settings, &SettingsDialog::historyCleared, this, [this] {
            m_sidebar->refresh();
            m_changes->clear();
            updateChanges();
        });
        connect(m_settings, &QDialog::finished, this, [this] {
            m_settings->deleteLater();
            m_settings = nullptr;
        });
    }
    m_settings->showPage(static_cast<SettingsDialog::Page>(page));
    m_settings->show();
    m_settings->raise();
    m_settings->activateWindow();
    return m_settings;
}

}
