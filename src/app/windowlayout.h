#pragma once

class QHeaderView;
class QMainWindow;

namespace ZAT16 {

/// The main window's layout in the settings: its dock state (EditorSettings::State), its geometry
/// (EditorSettings::Geometry, see Tools::saveWidgetGeometry()) and the tree header's state
/// (EditorSettings::TreeHeader), with a check beside them (EditorSettings::LayoutCheck): a format
/// version and a SHA-256 over the Qt version, the three values and that version. Qt's restore
/// functions trust their input, and one damaged byte of a window state crashes
/// QMainWindow::restoreState(); so the three are restored together, only when the check holds.
///
/// A start that ends while restoring them, before its window was shown, leaves a marker
/// (EditorSettings::Restoring) that makes the next start skip them once.
class WindowLayout
{
public:
    /// Applies the stored layout to \a window and \a header, unless the check is missing or does
    /// not hold, or the start before ended before showing its window; the window then keeps its
    /// defaults. Until windowShown() or the window's destruction the marker stays set.
    /// Returns true when the layout was applied.
    static bool restore(QMainWindow *window, QHeaderView *header);

    /// Stores the layout of \a window and \a header with its check.
    static void store(QMainWindow *window, QHeaderView *header);

    /// To be called whenever \a window is shown; the first time after restore(), it clears the
    /// marker (once no other window of this program is still between restoring and showing).
    static void windowShown(QMainWindow *window);
};

} // namespace ZAT16
