#pragma once

#include <QHash>
#include <QList>
#include <QPointer>
#include <QRect>
#include <QTimer>
#include <QVariantMap>
#include <QWidget>

class PreferencesPane;
class QActionGroup;
class QToolBar;
class QVBoxLayout;
class UserDefaults;

// The preferences window: a toolbar with one item per pane, the chosen pane below it. The window keeps
// one width (470 plus the translatable "PrefWindowPaddingSize") and takes each pane's natural height,
// or more for a pane whose height may grow. The chosen pane, the window's place and the size of a
// resized pane are remembered in the settings.
class PreferencesWindowController : public QWidget
{
    Q_OBJECT
public:
    static inline const QString kSelectedIdentifierKey = QStringLiteral("Panewise Selected Identifier View");
    static inline const QString kFrameTopLeftKey = QStringLiteral("Panewise Frame Top Left");
    // The identifier of a flexible space in the toolbar.
    static inline const QString kFlexibleSpaceIdentifier = QStringLiteral("NSToolbarFlexibleSpaceItem");

    // Takes the panes (a null entry is a flexible space in the toolbar). An empty title: the window shows
    // the chosen pane's label.
    PreferencesWindowController(UserDefaults& defaults, const QList<PreferencesPane*>& viewControllers,
                                const QString& title = QString(), QWidget* parent = nullptr);
    ~PreferencesWindowController() override;

    void addViewController(PreferencesPane* viewController);
    PreferencesPane* firstViewController() const;
    QStringList toolbarItemIdentifiers() const;
    // -1 while no pane is shown.
    int indexOfSelectedController() const;
    PreferencesPane* viewControllerForIdentifier(const QString& identifier) const;
    PreferencesPane* selectedViewController() const { return m_selectedViewController; }
    // Shows the pane, unless the shown one refuses to let its edit go.
    void setSelectedViewController(PreferencesPane* viewController);
    void selectControllerAtIndex(int index);
    void selectControllerWithIdentifier(const QString& identifier);
    // The next or previous pane, round at either end, flexible spaces skipped.
    void goNextTab();
    void goPreviousTab();
    // "changePrefsTab": shows the pane named under "tab", when there is one.
    void changeTabs(const QVariantMap& userInfo);

    QToolBar* toolbar() const { return m_toolbar; }
    // The width every pane is shown at.
    static int paneWidth();
    // The key under which a pane's resized size is kept.
    static QString frameKey(const QString& identifier);

signals:
    void panewiseWindowControllerDidChangeView(PreferencesWindowController* controller);

protected:
    void closeEvent(QCloseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void windowDidLoad();
    QAction* toolbarItemFor(const PreferencesPane* viewController) const;
    void insertToolbarItem(PreferencesPane* viewController);
    void goToNeighbour(int step);
    void saveFrame();

    UserDefaults& m_defaults;
    QString m_title;
    QList<QPointer<PreferencesPane>> m_viewControllers;
    QHash<QString, QRect> m_minimumViewRects;
    QPointer<PreferencesPane> m_selectedViewController;
    QToolBar* m_toolbar;
    QActionGroup* m_toolbarItems;
    QVBoxLayout* m_layout;
    QTimer m_frameChanged; // a drag moves the window many times: the place is saved once it rests
    bool m_loaded = false;
};
