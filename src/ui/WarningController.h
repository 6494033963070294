#pragma once

#include <QPoint>
#include <QWidget>

class FlatButton;

// The window that explains why Safari cannot be protected yet: Corvella cannot read Safari's files.
// Frameless, moved by dragging its background, above ordinary windows; it deletes itself when closed
// and says so (releaseFileAccessWindow), so the next warning makes a fresh window.
class WarningController : public QWidget
{
    Q_OBJECT
public:
    explicit WarningController(QWidget* parent = nullptr);

    FlatButton* closeButton() const { return m_closeButton; }
    FlatButton* quitButton() const { return m_quitButton; }

signals:
    void releaseFileAccessWindow(WarningController* controller);
    void quitCorvella();

protected:
    void closeEvent(QCloseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void releaseWindow();

    FlatButton* m_closeButton;
    FlatButton* m_quitButton;
    QPoint m_dragOffset;
    bool m_released = false;
};
