#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>

class Workspace;

// The picture of a tile: the browser's own icon, from its desktop entry through the icon theme
// (Flatpak and Snap entries too), or a built-in picture when the theme has none. A tile of a browser
// that is not activated ("Chromium-disabled") is greyed inside its own outline, its shapes still seen.
class IconTransformer
{
public:
    explicit IconTransformer(Workspace& workspace);

    // No icon for a name that is no browser's.
    QIcon transformedValue(const QString& tileName) const;
    // The same lookup, never tinted.
    QIcon iconForBrowser(const QString& browser) const;
    // Fills the picture with white 0.4 where it is opaque (source-atop), keeping its alpha.
    static QPixmap tintImage(const QPixmap& image);
    // The tint, with the icon's own shapes in grey over it.
    static QPixmap dimmed(const QPixmap& image);

private:
    Workspace& m_workspace;
};
