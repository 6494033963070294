#pragma once

#include <QLabel>
#include <QWidget>

class BrowserCollection;
class QPushButton;
class HoverButton;
class IconTransformer;
class ToggleSwitch;

// The main window: the protection switch with its info label, the row of browser tiles and the info
// button, on a gradient that keeps its white text readable in light and dark themes. Closing it only
// hides it: the agent goes on protecting.
class MainWindow : public QWidget
{
    Q_OBJECT
public:
    explicit MainWindow(const IconTransformer& icons, QWidget* parent = nullptr);

    ToggleSwitch* enabledButton() const { return m_enabledButton; }
    BrowserCollection* collectionView() const { return m_collectionView; }
    HoverButton* infoButton() const { return m_infoButton; }
    QString infoText() const { return m_infoLabel->text(); }
    QPushButton* grantButton() const { return m_grantButton; }

    // Without access to the home folder nothing can be protected: the label says so, and a button asks.
    void updateInfoLabel(bool isRunning, bool hasAccess = true);
    // With "hideDock" the window keeps out of the task bar (a tool window), as the agent lives in the tray.
    void setShownInTaskBar(bool shown);
    void openWindow();

signals:
    // A press anywhere in the window but on a tile: an open browser popover closes.
    void preferencesRequested();
    void grantAccessRequested();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    ToggleSwitch* m_enabledButton;
    QLabel* m_infoLabel;
    QPushButton* m_grantButton;
    BrowserCollection* m_collectionView;
    HoverButton* m_infoButton;
};
