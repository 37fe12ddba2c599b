#pragma once

#include <QByteArray>
#include <QString>

class QWidget;

/// Window geometry, path and error-text helpers that know nothing about definitions.
namespace Tools {

/// A QDataStream record of the widget's position (QPoint, from pos()), its size (QSize, the
/// geometry's width and height) and whether it is maximized (bool), in this order.
QByteArray saveWidgetGeometry(QWidget *widget);

/// Applies a record made by saveWidgetGeometry() to \a widget, but only as far as it fits the
/// screens attached now: a position that lies on no screen is ignored (the widget keeps its
/// place), one that does not fit the screen's available area is centred or, failing that, not
/// used. A position at most 16 pixels beside the left or right edge of a screen's available area
/// counts as on that screen. Each refusal is written as a red debug line.
///
/// The size is never applied larger than the available area of the screen the widget is on
/// afterwards (the one of the restored position, or where the widget already was when that
/// position was not used): width and height are each cut to that area's.
///
/// A maximized record maximizes the widget (it shows maximized when, or if already, visible).
///
/// Returns false when \a geometry is empty, too short or too long to be one record, or holds an
/// invalid size; the widget is then not touched. Otherwise returns true when anything was applied:
/// the position, the size (also when cut) or the maximized state. So a record whose position is
/// refused but whose size is restored returns true, and only a record of which nothing could be
/// used (position refused, size refused, not maximized) returns false.
bool restoreWidgetGeometry(QWidget *widget, QByteArray const &geometry);

/// The home directory with a separator ensured, followed by "Documents".
QString documentsPath();
/// The home directory.
QString appDataPath();
/// \a path with "/" appended, unless it is empty or already ends with "/".
QString ensureDirectorySeparator(QString const &path);
/// "All Files (*)", the catch-all entry of file dialog filters. Not translated.
QString allFilesFilter();

/// The system's text for the error number \a errorNumber (strerror).
QString systemErrorString(int errorNumber);
/// The system's text for the current errno.
QString systemErrorString();

} // namespace Tools
