#include "ui/PreferencesWindowController.h"

#include "platform/UserDefaults.h"
#include "ui/PreferencesPane.h"

#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QShortcut>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int kBaseWidth = 470;

// Points and rectangles are stored as "{x, y}" and "{{x, y}, {w, h}}".
QString pointString(const QPoint& point)
{
    return QStringLiteral("{%1, %2}").arg(point.x()).arg(point.y());
}

QString rectString(const QRect& rect)
{
    return QStringLiteral("{{%1, %2}, {%3, %4}}")
        .arg(rect.x())
        .arg(rect.y())
        .arg(rect.width())
        .arg(rect.height());
}

QList<int> numbersIn(const QString& text)
{
    QList<int> numbers;
    static const QRegularExpression number(QStringLiteral("-?\\d+"));
    for (const auto& match : number.globalMatch(text))
        numbers.append(match.captured().toInt());
    return numbers;
}

} // namespace

PreferencesWindowController::PreferencesWindowController(UserDefaults& defaults,
                                                         const QList<PreferencesPane*>& viewControllers,
                                                         const QString& title, QWidget* parent)
    : QWidget(parent, Qt::Window), m_defaults(defaults), m_title(title), m_toolbar(new QToolBar(this)),
      m_toolbarItems(new QActionGroup(this)), m_layout(new QVBoxLayout(this))
{
    setAccessibleName(tr("Corvella Preferences"));
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
    m_layout->setSizeConstraint(QLayout::SetNoConstraint);
    m_toolbar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    m_toolbar->setMovable(false);
    m_toolbar->setFloatable(false);
    m_toolbar->setIconSize(QSize(32, 32));
    m_toolbar->setAccessibleName(tr("Preference Panes"));
    m_layout->addWidget(m_toolbar);
    m_toolbarItems->setExclusive(true);
    connect(m_toolbarItems, &QActionGroup::triggered, this,
            [this](QAction* item) { selectControllerWithIdentifier(item->data().toString()); });
    for (PreferencesPane* viewController : viewControllers)
        insertToolbarItem(viewController);

    // The keyboard reaches every pane, and closes the window, as in other preference windows.
    const auto shortcut = [this](const QKeySequence& keys, auto slot) {
        connect(new QShortcut(keys, this), &QShortcut::activated, this, slot);
    };
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_Tab), &PreferencesWindowController::goNextTab);
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_PageDown), &PreferencesWindowController::goNextTab);
    shortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Tab), &PreferencesWindowController::goPreviousTab);
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_PageUp), &PreferencesWindowController::goPreviousTab);
    shortcut(QKeySequence(Qt::Key_Escape), &QWidget::close);
    shortcut(QKeySequence::Close, &QWidget::close);

    m_frameChanged.setSingleShot(true);
    m_frameChanged.setInterval(300);
    connect(&m_frameChanged, &QTimer::timeout, this, &PreferencesWindowController::saveFrame);
    windowDidLoad();
}

PreferencesWindowController::~PreferencesWindowController() = default;

int PreferencesWindowController::paneWidth()
{
    //: The preference window's extra width in pixels beyond 470, for languages with longer texts. A number.
    const int padding = tr("PrefWindowPaddingSize").toInt(); // 0 when the text is not a number
    return kBaseWidth + padding;
}

QString PreferencesWindowController::frameKey(const QString& identifier)
{
    return QStringLiteral("Panewise %1 Frame").arg(identifier);
}

void PreferencesWindowController::windowDidLoad()
{
    if (!m_title.isEmpty())
        setWindowTitle(m_title);
    if (firstViewController()) {
        PreferencesPane* stored =
            viewControllerForIdentifier(m_defaults.stringForKey(kSelectedIdentifierKey).value_or(QString()));
        setSelectedViewController(stored ? stored : firstViewController());
    }
    // A place on a screen that is no longer there would put the window out of reach.
    const QList<int> topLeft = numbersIn(m_defaults.stringForKey(kFrameTopLeftKey).value_or(QString()));
    if (topLeft.size() == 2 && QGuiApplication::screenAt(QPoint(topLeft[0], topLeft[1]) + QPoint(40, 20)))
        move(topLeft[0], topLeft[1]);
    m_loaded = true;
}

void PreferencesWindowController::insertToolbarItem(PreferencesPane* viewController)
{
    m_viewControllers.append(viewController);
    if (!viewController) {
        auto* space = new QWidget(m_toolbar);
        space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
        m_toolbar->addWidget(space);
        return;
    }
    viewController->setParent(this);
    viewController->hide();
    QAction* item =
        m_toolbar->addAction(viewController->toolbarItemImage(), viewController->toolbarItemLabel());
    item->setCheckable(true);
    item->setData(viewController->identifier());
    m_toolbarItems->addAction(item);
    if (auto* button = qobject_cast<QToolButton*>(m_toolbar->widgetForAction(item))) {
        button->setFocusPolicy(Qt::TabFocus);
        button->setAccessibleName(viewController->toolbarItemLabel());
    }
}

void PreferencesWindowController::addViewController(PreferencesPane* viewController)
{
    insertToolbarItem(viewController);
}

PreferencesPane* PreferencesWindowController::firstViewController() const
{
    for (const auto& viewController : m_viewControllers) {
        if (viewController)
            return viewController;
    }
    return nullptr;
}

QStringList PreferencesWindowController::toolbarItemIdentifiers() const
{
    QStringList identifiers;
    for (const auto& viewController : m_viewControllers)
        identifiers.append(viewController ? viewController->identifier() : kFlexibleSpaceIdentifier);
    return identifiers;
}

int PreferencesWindowController::indexOfSelectedController() const
{
    return m_selectedViewController ? int(m_viewControllers.indexOf(m_selectedViewController)) : -1;
}

PreferencesPane* PreferencesWindowController::viewControllerForIdentifier(const QString& identifier) const
{
    for (const auto& viewController : m_viewControllers) {
        if (viewController && viewController->identifier() == identifier)
            return viewController;
    }
    return nullptr;
}

QAction* PreferencesWindowController::toolbarItemFor(const PreferencesPane* viewController) const
{
    for (QAction* item : m_toolbarItems->actions()) {
        if (viewController && item->data().toString() == viewController->identifier())
            return item;
    }
    return nullptr;
}

void PreferencesWindowController::setSelectedViewController(PreferencesPane* viewController)
{
    if (!viewController || viewController == m_selectedViewController)
        return;
    if (PreferencesPane* shown = m_selectedViewController) {
        if (!shown->commitEditing()) {
            if (QAction* item = toolbarItemFor(shown))
                item->setChecked(true);
            return;
        }
        m_layout->removeWidget(shown);
        shown->hide();
        shown->viewDidDisappear();
    }

    if (m_title.isEmpty())
        setWindowTitle(viewController->toolbarItemLabel());
    if (QAction* item = toolbarItemFor(viewController))
        item->setChecked(true);
    m_defaults.setObject(viewController->identifier(), kSelectedIdentifierKey);

    // The pane's natural size is its size when first shown; a resizable pane may be larger.
    const int width = paneWidth();
    const QString identifier = viewController->identifier();
    if (!m_minimumViewRects.contains(identifier)) {
        const int naturalHeight = viewController->hasHeightForWidth() ? viewController->heightForWidth(width)
                                                                      : viewController->sizeHint().height();
        m_minimumViewRects.insert(
            identifier, QRect(0, 0, std::min(width, viewController->sizeHint().width()), naturalHeight));
    }
    const QRect natural = m_minimumViewRects.value(identifier);
    const bool resizable = viewController->hasResizableHeight().value_or(
        bool(viewController->sizePolicy().verticalPolicy() & QSizePolicy::ExpandFlag));
    const QList<int> stored = numbersIn(m_defaults.stringForKey(frameKey(identifier)).value_or(QString()));
    const int height =
        resizable && stored.size() == 4 ? std::max(natural.height(), stored[3]) : natural.height();

    // The window keeps its top edge; its size bounds follow the pane.
    const int chrome = m_toolbar->sizeHint().height();
    setMinimumSize(natural.width(), chrome + natural.height());
    setMaximumSize(width, resizable ? QWIDGETSIZE_MAX : chrome + height);
    resize(width, chrome + height);

    viewController->viewWillAppear();
    m_layout->addWidget(viewController, 1);
    viewController->show();
    m_selectedViewController = viewController;
    emit panewiseWindowControllerDidChangeView(this);
}

void PreferencesWindowController::selectControllerAtIndex(int index)
{
    if (index >= 0 && index < m_viewControllers.size())
        setSelectedViewController(m_viewControllers.at(index));
}

void PreferencesWindowController::selectControllerWithIdentifier(const QString& identifier)
{
    if (PreferencesPane* viewController = viewControllerForIdentifier(identifier))
        setSelectedViewController(viewController);
    else if (QAction* item = toolbarItemFor(m_selectedViewController))
        item->setChecked(true);
}

void PreferencesWindowController::goNextTab()
{
    goToNeighbour(1);
}

void PreferencesWindowController::goPreviousTab()
{
    goToNeighbour(-1);
}

void PreferencesWindowController::goToNeighbour(int step)
{
    const int count = int(m_viewControllers.size());
    int index = indexOfSelectedController();
    for (int tried = 0; tried < count; ++tried) {
        index = ((index + step) % count + count) % count;
        if (m_viewControllers.at(index)) {
            selectControllerAtIndex(index);
            return;
        }
    }
}

void PreferencesWindowController::changeTabs(const QVariantMap& userInfo)
{
    if (PreferencesPane* viewController =
            viewControllerForIdentifier(userInfo.value(QStringLiteral("tab")).toString()))
        setSelectedViewController(viewController);
}

void PreferencesWindowController::closeEvent(QCloseEvent* event)
{
    if (m_selectedViewController && !m_selectedViewController->commitEditing()) {
        event->ignore();
        return;
    }
    if (m_frameChanged.isActive()) {
        m_frameChanged.stop();
        saveFrame();
    }
    event->accept();
}

void PreferencesWindowController::moveEvent(QMoveEvent* event)
{
    QWidget::moveEvent(event);
    if (m_loaded && isVisible())
        m_frameChanged.start();
}

void PreferencesWindowController::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (m_loaded && isVisible())
        m_frameChanged.start();
}

void PreferencesWindowController::saveFrame()
{
    m_defaults.setObject(pointString(pos()), kFrameTopLeftKey);
    if (m_selectedViewController)
        m_defaults.setObject(rectString(QRect(QPoint(0, 0), m_selectedViewController->size())),
                             frameKey(m_selectedViewController->identifier()));
}
