// drawicons: draws the editor's 16 x 16 icons, their 32 x 32 versions and the application icon for the
// desktop.
//
//   drawicons --output <resources folder>   writes icons/i16_*.png, icons/i16_*@2x.png and
//                                           hicolor/<N>x<N>/apps/zatedit.png
//   drawicons --sheet <file.png>            writes a contact sheet (enlarged, names, 1:1 strips) for review
//
// Every icon is drawn with QPainter on a transparent QImage. No text is drawn with fonts: the few
// characters ("123", "abc", "01", ".h", "?", "!") are small pixel glyphs, so that the result is the
// same on every machine and stays sharp at 16 pixels. Straight edges lie on the pixel grid (fills on
// whole pixels, one-pixel strokes on half pixels); antialiasing only smooths curves and diagonals.
//
// The 32 x 32 versions ("@2x", which QIcon picks on screens with a device pixel ratio of 2) are drawn
// by the same functions on a painter scaled by 2, so the grid stays the grid: fills cover whole
// pixels, glyph pixels become 2 x 2 blocks, a one-pixel stroke becomes two pixels, and curves and
// diagonals get the finer resolution instead of being enlarged pixels.

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QPainterPathStroker>
#include <QTextStream>

#include <cmath>
#include <cstring>
#include <functional>
#include <vector>

namespace {

// One palette for all icons.
const QColor ink(0x33, 0x39, 0x40);
const QColor paper(0xff, 0xff, 0xff);
const QColor paperShade(0xdf, 0xe5, 0xec);
const QColor grey(0x7d, 0x87, 0x91);
const QColor lightGrey(0xb8, 0xc1, 0xca);
const QColor blue(0x2f, 0x6e, 0xd3);
const QColor blueDark(0x1c, 0x47, 0x8f);
const QColor blueLight(0xa9, 0xc8, 0xf4);
const QColor green(0x2f, 0xa2, 0x4a);
const QColor greenDark(0x1b, 0x6c, 0x30);
const QColor red(0xd9, 0x3b, 0x3b);
const QColor redDark(0x99, 0x20, 0x22);
const QColor orange(0xe0, 0x7a, 0x14);
const QColor orangeDark(0x9c, 0x50, 0x06);
const QColor yellow(0xf5, 0xc8, 0x42);
const QColor yellowLight(0xfb, 0xe0, 0x86);
const QColor yellowDark(0xb0, 0x80, 0x10);
const QColor purple(0x86, 0x50, 0xc8);
const QColor purpleDark(0x56, 0x2c, 0x8c);
const QColor purpleLight(0xdc, 0xc8, 0xf4);
const QColor teal(0x18, 0x96, 0x96);
const QColor tealDark(0x0c, 0x62, 0x62);
const QColor brown(0xb5, 0x80, 0x48);
const QColor brownDark(0x73, 0x4b, 0x22);
const QColor slate(0x45, 0x4f, 0x5a);
const QColor slateDark(0x26, 0x2c, 0x33);
const QColor lineGrey(0x6e, 0x7a, 0x86);
const QColor binaryGreen(0x8c, 0xf0, 0x96);
const QColor navy(0x20, 0x2f, 0x8a);
const QColor pink(0xf0, 0x8c, 0x9c);

// The scale of the icon being drawn: 1 for the 16 pixel icons, 2 for their 32 pixel versions.
int drawScale = 1;

// At a scale above 1 a stroke is widened or narrowed to whole pixels (at least one), so that thin
// outlines of 0.8 pixels become crisp two-pixel lines instead of blurred ones of 1.6.
QPen pen(const QColor &color, qreal width = 1.0, Qt::PenCapStyle cap = Qt::RoundCap)
{
    if (drawScale > 1)
        width = std::max(1.0, std::round(width * drawScale)) / drawScale;
    QPen p(color, width);
    p.setCapStyle(cap);
    p.setJoinStyle(Qt::RoundJoin);
    return p;
}

void fill(QPainter &p, int x, int y, int w, int h, const QColor &color)
{
    p.fillRect(QRect(x, y, w, h), color);
}

// Pixel glyphs, '#' set, anything else clear. Rows of one glyph have equal length.
struct Glyph {
    char ch;
    std::vector<const char *> rows;
};

const std::vector<Glyph> &glyphs()
{
    static const std::vector<Glyph> table = {
        { '0', { ".##.", "#..#", "#..#", "#..#", "#..#", "#..#", ".##." } },
        { '1', { ".#", "##", ".#", ".#", ".#", ".#", ".#" } },
        { '2', { "##.", "..#", "..#", ".#.", "#..", "#..", "###" } },
        { '3', { "##.", "..#", "..#", "##.", "..#", "..#", "##." } },
        { 'a', { "...", "...", "##.", "..#", ".##", "#.#", ".##" } },
        { 'b', { "#..", "#..", "##.", "#.#", "#.#", "#.#", "##." } },
        { 'c', { "...", "...", ".##", "#..", "#..", "#..", ".##" } },
        { '?', { ".####.", "##..##", "....##", "...##.", "..##..", "......", "..##.." } },
        { '!', { "##", "##", "##", "##", "##", "..", "##" } },
        { 'h', { "##....", "##....", "#####.", "###.##", "##..##", "##..##", "##..##" } },
        { '.', { "..", "..", "..", "..", "..", "##", "##" } },
    };
    return table;
}

const Glyph *glyph(char ch)
{
    for (const Glyph &g : glyphs()) {
        if (g.ch == ch)
            return &g;
    }
    return nullptr;
}

int textWidth(const char *text, int spacing)
{
    int width = 0;
    for (const char *c = text; *c; ++c) {
        if (const Glyph *g = glyph(*c))
            width += int(strlen(g->rows.front())) + (c == text ? 0 : spacing);
    }
    return width;
}

void drawText(QPainter &p, const char *text, int x, int y, const QColor &color, int spacing = 1)
{
    for (const char *c = text; *c; ++c) {
        const Glyph *g = glyph(*c);
        if (!g)
            continue;
        for (size_t row = 0; row < g->rows.size(); ++row) {
            for (int col = 0; g->rows[row][col]; ++col) {
                if (g->rows[row][col] == '#')
                    fill(p, x + col, y + int(row), 1, 1, color);
            }
        }
        x += int(strlen(g->rows.front())) + spacing;
    }
}

void drawTextCentered(QPainter &p, const char *text, int y, const QColor &color, int spacing = 1)
{
    drawText(p, text, (16 - textWidth(text, spacing) + 1) / 2, y, color, spacing);
}

// Cuts a transparent gap of `gap` pixels around a shape, so that an overlaid emblem stands apart from
// the picture below on any background.
void knockOut(QPainter &p, const QPainterPath &shape, qreal gap)
{
    p.save();
    p.setCompositionMode(QPainter::CompositionMode_Clear);
    p.setPen(pen(Qt::black, 2 * gap + 1));
    p.setBrush(Qt::black);
    p.drawPath(shape);
    p.restore();
}

// ---------------------------------------------------------------------------------------------------
// Building blocks shared by several icons

// A value chip: a coloured rounded bar with a short pixel text.
void chip(QPainter &p, const QColor &body, const QColor &edge, const char *text, const QColor &textColor)
{
    p.setPen(pen(edge));
    p.setBrush(body);
    p.drawRoundedRect(QRectF(0.5, 3.5, 15, 10), 2.5, 2.5);
    drawTextCentered(p, text, 5, textColor);
}

// A wall calendar whose outline occupies the pixels [x, x + w) x [y, y + h).
void calendar(QPainter &p, int x, int y, int w, int h)
{
    p.setPen(pen(ink));
    p.setBrush(paper);
    p.drawRect(QRectF(x + 0.5, y + 1.5, w - 1, h - 2));
    fill(p, x + 1, y + 2, w - 2, 3, red);
    // binder rings
    const int ring = w > 12 ? 3 : 2;
    fill(p, x + ring, y, 1, 3, ink);
    fill(p, x + w - 1 - ring, y, 1, 3, ink);
    // days: three columns, two rows
    const int cell = 2;
    const int gapX = (w - 2 - 3 * cell) / 4;
    const int left = x + 1 + gapX + ((w - 2 - 3 * cell) % 4) / 2;
    const int top = y + 6;
    const int stepY = 3;
    for (int row = 0; row < 2; ++row) {
        for (int col = 0; col < 3; ++col) {
            const bool today = row == 1 && col == 1;
            fill(p, left + col * (cell + gapX), top + row * stepY, cell, cell, today ? red : grey);
        }
    }
}

// A clock face centred on a pixel centre (cx + 0.5, cy + 0.5) with the given radius in pixels.
void clock(QPainter &p, int cx, int cy, int radius, int minuteLength, int hourLength)
{
    p.setPen(pen(ink));
    p.setBrush(paper);
    p.drawEllipse(QPointF(cx + 0.5, cy + 0.5), radius, radius);
    fill(p, cx, cy - minuteLength, 1, minuteLength + 1, ink);
    fill(p, cx, cy, hourLength + 1, 1, ink);
    fill(p, cx, cy, 1, 1, red);
}

QPainterPath undoArrowPath()
{
    // the shaft leaves the head to the right, turns down and comes back below it
    QPainterPath shaft;
    shaft.moveTo(5, 5.5);
    shaft.lineTo(8.5, 5.5);
    shaft.cubicTo(15.0, 5.5, 15.0, 13.5, 8.5, 13.5);
    shaft.lineTo(5.5, 13.5);
    QPainterPathStroker stroker;
    stroker.setWidth(3);
    stroker.setCapStyle(Qt::FlatCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    QPainterPath arrow = stroker.createStroke(shaft);
    QPainterPath head;
    head.moveTo(0.5, 5.5);
    head.lineTo(6.5, 0.5);
    head.lineTo(6.5, 10.5);
    head.closeSubpath();
    return arrow.united(head).simplified();
}

void undoArrow(QPainter &p)
{
    p.setPen(pen(blueDark));
    p.setBrush(blue);
    p.drawPath(undoArrowPath());
}

// A pencil lying from its point `tip` up and to the right, `length` long and `width` thick.
// With `detail` it gets a ferrule and a graphite point of its own colour.
QPainterPath pencilShape(QPointF tip, qreal length, qreal width)
{
    QPainterPath path;
    const qreal point = width * 1.3;
    path.moveTo(0, 0);
    path.lineTo(point, -width / 2);
    path.lineTo(length, -width / 2);
    path.lineTo(length, width / 2);
    path.lineTo(point, width / 2);
    path.closeSubpath();
    QTransform t;
    t.translate(tip.x(), tip.y());
    t.rotate(-45);
    return t.map(path);
}

void pencil(QPainter &p, QPointF tip, qreal length, qreal width, qreal outline, bool detail)
{
    const qreal point = width * 1.3;
    p.save();
    p.translate(tip);
    p.rotate(-45);
    p.setPen(Qt::NoPen);
    const qreal half = width / 2;
    // wood point
    QPainterPath wood;
    wood.moveTo(0, 0);
    wood.lineTo(point, -half);
    wood.lineTo(point, half);
    wood.closeSubpath();
    p.setBrush(QColor(0xf3, 0xd2, 0xa4));
    p.drawPath(wood);
    // graphite
    const qreal lead = point * 0.4;
    QPainterPath graphite;
    graphite.moveTo(0, 0);
    graphite.lineTo(lead, -half * 0.4);
    graphite.lineTo(lead, half * 0.4);
    graphite.closeSubpath();
    p.setBrush(ink);
    p.drawPath(graphite);
    // body, ferrule, eraser
    const qreal eraser = detail ? width * 0.9 : width * 0.8;
    const qreal ferrule = detail ? width * 0.5 : 0;
    const qreal bodyEnd = length - eraser - ferrule;
    p.setBrush(yellow);
    p.drawRect(QRectF(point, -half, bodyEnd - point, width));
    if (detail) {
        p.setBrush(yellowDark);
        p.drawRect(QRectF(point, half / 3, bodyEnd - point, half * 2 / 3));
        p.setBrush(lightGrey);
        p.drawRect(QRectF(bodyEnd, -half, ferrule, width));
    }
    p.setBrush(pink);
    p.drawRect(QRectF(length - eraser, -half, eraser, width));
    // outline
    QPainterPath outlinePath;
    outlinePath.moveTo(0, 0);
    outlinePath.lineTo(point, -half);
    outlinePath.lineTo(length, -half);
    outlinePath.lineTo(length, half);
    outlinePath.lineTo(point, half);
    outlinePath.closeSubpath();
    p.setBrush(Qt::NoBrush);
    p.setPen(pen(ink, outline));
    p.drawPath(outlinePath);
    p.drawLine(QPointF(point, -half), QPointF(point, half));
    p.restore();
}

void floppy(QPainter &p)
{
    QPainterPath body;
    body.moveTo(1.5, 1.5);
    body.lineTo(12.5, 1.5);
    body.lineTo(14.5, 3.5);
    body.lineTo(14.5, 14.5);
    body.lineTo(1.5, 14.5);
    body.closeSubpath();
    p.setPen(pen(blueDark));
    p.setBrush(blue);
    p.drawPath(body);
    // metal shutter with its window
    fill(p, 4, 2, 8, 5, paperShade);
    fill(p, 9, 3, 2, 3, blueDark);
    // label
    fill(p, 3, 9, 10, 5, paper);
    fill(p, 4, 10, 8, 1, lightGrey);
    fill(p, 4, 12, 8, 1, lightGrey);
}

void folderBack(QPainter &p, const QColor &body)
{
    QPainterPath path;
    path.moveTo(0.5, 13.5);
    path.lineTo(0.5, 2.5);
    path.lineTo(5.5, 2.5);
    path.lineTo(7.5, 4.5);
    path.lineTo(14.5, 4.5);
    path.lineTo(14.5, 13.5);
    path.closeSubpath();
    p.setPen(pen(yellowDark));
    p.setBrush(body);
    p.drawPath(path);
}

// ---------------------------------------------------------------------------------------------------
// The icons of the tree: one per data type and item kind

void iconEmpty(QPainter &) { }

void iconData(QPainter &p)
{
    chip(p, slate, slateDark, "01", binaryGreen);
}

void iconInt(QPainter &p)
{
    chip(p, blue, blueDark, "123", paper);
}

void iconString(QPainter &p)
{
    chip(p, orange, orangeDark, "abc", paper);
}

void iconBool(QPainter &p)
{
    p.setPen(pen(ink));
    p.setBrush(paper);
    p.drawRoundedRect(QRectF(1.5, 2.5, 11, 11), 1.5, 1.5);
    QPainterPath tick;
    tick.moveTo(4.0, 8.0);
    tick.lineTo(7.0, 11.0);
    tick.lineTo(13.5, 2.5);
    p.setBrush(Qt::NoBrush);
    p.setPen(pen(green, 2.4));
    p.drawPath(tick);
}

void iconDate(QPainter &p)
{
    calendar(p, 1, 1, 14, 14);
}

void iconTime(QPainter &p)
{
    clock(p, 7, 7, 6, 4, 3);
    // marks at twelve, three, six and nine
    p.setPen(Qt::NoPen);
    fill(p, 7, 2, 1, 1, grey);
    fill(p, 12, 7, 1, 1, grey);
    fill(p, 7, 12, 1, 1, grey);
    fill(p, 2, 7, 1, 1, grey);
    // hands again over the marks
    fill(p, 7, 3, 1, 5, ink);
    fill(p, 7, 7, 4, 1, ink);
    fill(p, 7, 7, 1, 1, red);
}

void iconDateTime(QPainter &p)
{
    calendar(p, 0, 0, 12, 12);
    QPainterPath face;
    face.addEllipse(QPointF(11.5, 11.5), 4, 4);
    knockOut(p, face, 0.6);
    clock(p, 11, 11, 4, 3, 2);
}

void iconListBullets(QPainter &p)
{
    for (int i = 0; i < 3; ++i) {
        const int y = 2 + 5 * i;
        p.setPen(pen(blueDark, 0.8));
        p.setBrush(blue);
        p.drawEllipse(QPointF(3, y + 1), 2, 2);
        fill(p, 7, y, 8, 2, lineGrey);
    }
}

void iconList(QPainter &p)
{
    for (int i = 0; i < 3; ++i) {
        const qreal y = 1.5 + 5 * i;
        p.setPen(pen(i == 0 ? blueDark : grey));
        p.setBrush(i == 0 ? blueLight : paper);
        p.drawRect(QRectF(1.5, y, 13, 3));
        fill(p, 4, int(y) + 1, i == 0 ? 7 : (i == 1 ? 5 : 6), 2, i == 0 ? blueDark : slate);
    }
}

void iconNetwork(QPainter &p)
{
    const QPointF hub(8, 8);
    const QPointF nodes[] = { { 3, 3 }, { 13, 3 }, { 3, 13 }, { 13, 13 } };
    p.setPen(pen(tealDark, 1.5));
    for (const QPointF &n : nodes)
        p.drawLine(hub, n);
    p.drawLine(nodes[0], nodes[1]);
    p.drawLine(nodes[2], nodes[3]);
    p.setPen(pen(tealDark));
    p.setBrush(teal);
    for (const QPointF &n : nodes)
        p.drawEllipse(n, 2.2, 2.2);
    p.setBrush(paper);
    p.drawEllipse(hub, 2.7, 2.7);
}

QPainterPath bubble(bool tailRight)
{
    QPainterPath body;
    body.addRoundedRect(QRectF(0.5, 0.5, 15, 11), 3, 3);
    QPainterPath tail;
    if (tailRight) {
        tail.moveTo(12.5, 10.5);
        tail.lineTo(13.5, 15.5);
        tail.lineTo(8, 10.5);
    } else {
        tail.moveTo(3.5, 10.5);
        tail.lineTo(2.5, 15.5);
        tail.lineTo(8, 10.5);
    }
    tail.closeSubpath();
    return body.united(tail).simplified();
}

void iconQuestion(QPainter &p)
{
    p.setPen(pen(blueDark));
    p.setBrush(blue);
    p.drawPath(bubble(false));
    drawTextCentered(p, "?", 2, paper);
}

void iconAnswer(QPainter &p)
{
    p.setPen(pen(greenDark));
    p.setBrush(green);
    p.drawPath(bubble(true));
    drawTextCentered(p, "!", 2, paper);
}

void iconMessage(QPainter &p)
{
    p.setPen(pen(ink));
    p.setBrush(paper);
    p.drawRect(QRectF(0.5, 2.5, 15, 11));
    // folds from the lower corners
    p.setPen(pen(lightGrey));
    p.drawLine(QPointF(1, 13), QPointF(6, 8.5));
    p.drawLine(QPointF(15, 13), QPointF(10, 8.5));
    // the flap
    QPainterPath flap;
    flap.moveTo(0.5, 2.5);
    flap.lineTo(8, 9.5);
    flap.lineTo(15.5, 2.5);
    p.setPen(pen(ink));
    p.setBrush(paperShade);
    p.drawPath(flap);
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(0.5, 2.5, 15, 11));
}

void iconPoint(QPainter &p)
{
    // axes
    fill(p, 1, 1, 1, 14, grey);
    fill(p, 1, 14, 14, 1, grey);
    // guides from the axes to the point
    for (int x = 3; x <= 8; x += 2)
        fill(p, x, 5, 1, 1, lightGrey);
    for (int y = 8; y <= 13; y += 2)
        fill(p, 10, y, 1, 1, lightGrey);
    p.setPen(pen(purpleDark));
    p.setBrush(purple);
    p.drawEllipse(QPointF(10.5, 5.5), 2.5, 2.5);
}

void iconRect(QPainter &p)
{
    p.setPen(pen(purple));
    p.setBrush(purpleLight);
    p.drawRect(QRectF(2.5, 3.5, 11, 9));
    const QPoint corners[] = { { 2, 3 }, { 13, 3 }, { 2, 12 }, { 13, 12 } };
    for (const QPoint &c : corners) {
        fill(p, c.x() - 1, c.y() - 1, 3, 3, purpleDark);
    }
}

// A dimension arrow along one axis: shaft from `from` to `to` (inclusive) on line `at`, with open
// heads two pixels deep.
void dimension(QPainter &p, bool horizontal, int at, int from, int to, const QColor &color)
{
    auto dot = [&](int along, int across, int len) {
        if (horizontal)
            fill(p, along, across, 1, len, color);
        else
            fill(p, across, along, len, 1, color);
    };
    for (int i = from; i <= to; ++i)
        dot(i, at, 1);
    for (int k = 1; k <= 2; ++k) {
        dot(from + k, at - k, 1);
        dot(from + k, at + k, 1);
        dot(to - k, at - k, 1);
        dot(to - k, at + k, 1);
    }
}

void iconSize(QPainter &p)
{
    p.setPen(pen(purpleDark));
    p.setBrush(purpleLight);
    p.drawRect(QRectF(1.5, 1.5, 8, 8));
    dimension(p, true, 13, 1, 10, purple);
    dimension(p, false, 13, 1, 10, purple);
}

void iconFolder(QPainter &p)
{
    folderBack(p, yellow);
    fill(p, 1, 6, 13, 1, yellowDark);
    fill(p, 1, 7, 13, 1, yellowLight);
}

void iconFolderOpen(QPainter &p)
{
    folderBack(p, yellowDark.lighter(130));
    // a sheet inside
    p.setPen(pen(grey));
    p.setBrush(paper);
    p.drawRect(QRectF(2.5, 4.5, 10, 6));
    // the front, tilted open
    QPainterPath front;
    front.moveTo(3.5, 7.5);
    front.lineTo(15.5, 7.5);
    front.lineTo(12.5, 13.5);
    front.lineTo(0.5, 13.5);
    front.closeSubpath();
    p.setPen(pen(yellowDark));
    p.setBrush(yellow);
    p.drawPath(front);
}

void iconTinyBullet(QPainter &p)
{
    p.setPen(pen(blueDark));
    p.setBrush(blue);
    p.drawEllipse(QPointF(8, 8), 3, 3);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 255, 255, 170));
    p.drawEllipse(QPointF(7, 7), 1, 1);
}

// ---------------------------------------------------------------------------------------------------
// The icons of menus and tool bar

void iconAdd(QPainter &p)
{
    QPainterPath plus;
    plus.moveTo(5.5, 1.5);
    plus.lineTo(10.5, 1.5);
    plus.lineTo(10.5, 5.5);
    plus.lineTo(14.5, 5.5);
    plus.lineTo(14.5, 10.5);
    plus.lineTo(10.5, 10.5);
    plus.lineTo(10.5, 14.5);
    plus.lineTo(5.5, 14.5);
    plus.lineTo(5.5, 10.5);
    plus.lineTo(1.5, 10.5);
    plus.lineTo(1.5, 5.5);
    plus.lineTo(5.5, 5.5);
    plus.closeSubpath();
    p.setPen(pen(greenDark, 1, Qt::SquareCap));
    p.setBrush(green);
    p.drawPath(plus);
}

void iconRemove(QPainter &p)
{
    p.setPen(pen(redDark, 1, Qt::SquareCap));
    p.setBrush(red);
    p.drawRect(QRectF(1.5, 5.5, 13, 5));
}

void iconCut(QPainter &p)
{
    // blades: each runs from its handle through the pivot to a point at the top
    QPainterPath left;
    left.moveTo(5.6, 10.6);
    left.lineTo(11.8, 0.6);
    left.lineTo(8.4, 10.9);
    left.closeSubpath();
    QPainterPath right;
    right.moveTo(10.4, 10.6);
    right.lineTo(4.2, 0.6);
    right.lineTo(7.6, 10.9);
    right.closeSubpath();
    p.setPen(pen(slateDark, 0.8));
    p.setBrush(lightGrey);
    p.drawPath(right);
    p.drawPath(left);
    // handles
    p.setBrush(Qt::NoBrush);
    p.setPen(pen(red, 2));
    p.drawEllipse(QPointF(4.5, 12.5), 2.2, 2.2);
    p.drawEllipse(QPointF(11.5, 12.5), 2.2, 2.2);
    // pivot
    p.setPen(Qt::NoPen);
    p.setBrush(slateDark);
    p.drawEllipse(QPointF(8, 7.3), 1, 1);
}

void sheet(QPainter &p, int x, int y, int w, int h, const QColor &body, int lines)
{
    p.setPen(pen(ink));
    p.setBrush(body);
    p.drawRect(QRectF(x + 0.5, y + 0.5, w - 1, h - 1));
    for (int i = 0; i < lines; ++i)
        fill(p, x + 2, y + 3 + 2 * i, w - 4 - (i % 2), 1, grey);
}

void iconCopy(QPainter &p)
{
    sheet(p, 1, 0, 9, 12, paperShade, 0);
    sheet(p, 6, 4, 9, 12, paper, 4);
}

void iconPaste(QPainter &p)
{
    p.setPen(pen(brownDark));
    p.setBrush(brown);
    p.drawRoundedRect(QRectF(1.5, 2.5, 13, 13), 1.5, 1.5);
    fill(p, 4, 5, 8, 9, paper);
    for (int i = 0; i < 3; ++i)
        fill(p, 5, 7 + 2 * i, 6 - (i % 2) * 2, 1, grey);
    p.setPen(pen(ink));
    p.setBrush(lightGrey);
    p.drawRoundedRect(QRectF(5.5, 0.5, 5, 4), 1, 1);
}

void iconUndo(QPainter &p)
{
    undoArrow(p);
}

void iconRedo(QPainter &p)
{
    p.translate(16, 0);
    p.scale(-1, 1);
    undoArrow(p);
}

void iconUndoHistory(QPainter &p)
{
    // the list of steps
    fill(p, 1, 1, 13, 2, lineGrey);
    fill(p, 1, 5, 7, 2, lineGrey);
    fill(p, 1, 9, 4, 2, lineGrey);
    fill(p, 1, 13, 4, 2, lineGrey);
    // a clock going back: a blue rim turning anticlockwise
    p.setPen(pen(blueDark));
    p.setBrush(paper);
    p.drawEllipse(QPointF(11, 11), 4.5, 4.5);
    p.setPen(pen(blue, 1.5, Qt::FlatCap));
    p.setBrush(Qt::NoBrush);
    p.drawArc(QRectF(7.5, 7.5, 7, 7), 100 * 16, 260 * 16);
    fill(p, 10, 9, 1, 3, ink);
    fill(p, 10, 11, 3, 1, ink);
    QPainterPath head;
    head.moveTo(8.0, 5.8);
    head.lineTo(11.3, 7.8);
    head.lineTo(8.0, 10.0);
    head.closeSubpath();
    p.setPen(Qt::NoPen);
    p.setBrush(blue);
    p.drawPath(head);
}

void iconSave(QPainter &p)
{
    floppy(p);
}

void iconSaveAs(QPainter &p)
{
    floppy(p);
    const QPointF tip(7.2, 15.2);
    knockOut(p, pencilShape(tip, 12, 3.6), 0.8);
    pencil(p, tip, 12, 3.6, 0.8, false);
}

void iconExit(QPainter &p)
{
    // door frame and the dark doorway
    p.setPen(pen(ink));
    p.setBrush(slateDark);
    p.drawRect(QRectF(1.5, 1.5, 8, 13));
    // the door, swung open towards the viewer
    QPainterPath door;
    door.moveTo(1.5, 1.5);
    door.lineTo(5.5, 3.5);
    door.lineTo(5.5, 15.5);
    door.lineTo(1.5, 14.5);
    door.closeSubpath();
    p.setPen(pen(brownDark));
    p.setBrush(brown);
    p.drawPath(door);
    // the arrow going out
    QPainterPath arrow;
    arrow.moveTo(6.5, 6.5);
    arrow.lineTo(10.5, 6.5);
    arrow.lineTo(10.5, 3.5);
    arrow.lineTo(15.5, 8);
    arrow.lineTo(10.5, 12.5);
    arrow.lineTo(10.5, 9.5);
    arrow.lineTo(6.5, 9.5);
    arrow.closeSubpath();
    p.setPen(pen(redDark));
    p.setBrush(red);
    p.drawPath(arrow);
}

void iconBomb(QPainter &p)
{
    // fuse holder
    p.save();
    p.translate(10.2, 5.2);
    p.rotate(45);
    p.setPen(pen(ink));
    p.setBrush(grey);
    p.drawRect(QRectF(-2, -1.5, 4, 3));
    p.restore();
    // body with a highlight
    p.setPen(pen(QColor(0x14, 0x17, 0x1a)));
    p.setBrush(QColor(0x2e, 0x33, 0x38));
    p.drawEllipse(QPointF(6.5, 10), 5, 5);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0x9a, 0xa3, 0xad));
    p.drawEllipse(QPointF(4.6, 8.1), 1.3, 1.3);
    // fuse and spark
    QPainterPath fuse;
    fuse.moveTo(11, 4.2);
    fuse.quadTo(11.5, 2, 13.5, 2.5);
    p.setBrush(Qt::NoBrush);
    p.setPen(pen(brownDark, 1.1));
    p.drawPath(fuse);
    p.setPen(pen(orange, 1));
    const QPointF spark(13.5, 2.5);
    for (int i = 0; i < 8; ++i) {
        const qreal a = i * M_PI / 4;
        const qreal len = (i % 2) ? 1.6 : 2.4;
        p.drawLine(spark, spark + QPointF(std::cos(a) * len, std::sin(a) * len));
    }
    p.setPen(Qt::NoPen);
    p.setBrush(yellow);
    p.drawEllipse(spark, 1.1, 1.1);
}

QPainterPath page()
{
    QPainterPath path;
    path.moveTo(2.5, 0.5);
    path.lineTo(10.5, 0.5);
    path.lineTo(13.5, 3.5);
    path.lineTo(13.5, 15.5);
    path.lineTo(2.5, 15.5);
    path.closeSubpath();
    return path;
}

void iconHeader(QPainter &p)
{
    p.setPen(pen(ink));
    p.setBrush(paper);
    p.drawPath(page());
    QPainterPath fold;
    fold.moveTo(10.5, 0.5);
    fold.lineTo(10.5, 3.5);
    fold.lineTo(13.5, 3.5);
    p.setBrush(paperShade);
    p.drawPath(fold);
    fill(p, 4, 3, 5, 1, lightGrey);
    fill(p, 4, 5, 7, 1, lightGrey);
    drawText(p, ".h", 4, 7, blue, 1);
}

void iconLua(QPainter &p)
{
    // a planet with a crater and its small moon
    const QColor rim(0x4a, 0x5c, 0xc4);
    p.setPen(pen(rim));
    p.setBrush(navy);
    p.drawEllipse(QPointF(7, 9), 6, 6);
    p.setPen(Qt::NoPen);
    p.setBrush(paper);
    p.drawEllipse(QPointF(9.4, 6.6), 1.9, 1.9);
    p.setPen(pen(rim));
    p.setBrush(navy);
    p.drawEllipse(QPointF(13.2, 2.8), 1.9, 1.9);
}

void iconFont(QPainter &p)
{
    // a serif capital A: thin left stroke, thick right stroke, bar and feet
    QPainterPath a;
    a.moveTo(6.8, 0.8);
    a.lineTo(9.6, 0.8);
    a.lineTo(14.2, 13.8);
    a.lineTo(11.4, 13.8);
    a.lineTo(10.3, 10.5);
    a.lineTo(5.6, 10.5);
    a.lineTo(4.5, 13.8);
    a.lineTo(3.2, 13.8);
    a.closeSubpath();
    QPainterPath counter;
    counter.moveTo(6.1, 9.0);
    counter.lineTo(9.8, 9.0);
    counter.lineTo(8.0, 3.6);
    counter.closeSubpath();
    QPainterPath glyph = a.subtracted(counter);
    glyph.addRect(1, 14, 6, 1);
    glyph.addRect(10, 14, 6, 1);
    glyph = glyph.simplified();
    // a faint light edge keeps the letter visible on dark backgrounds
    p.setPen(pen(QColor(255, 255, 255, 110), 2));
    p.setBrush(Qt::NoBrush);
    p.drawPath(glyph);
    p.setPen(Qt::NoPen);
    p.setBrush(ink);
    p.drawPath(glyph);
}

// The table with a pencil, drawn for any size from 16 pixels up: small sizes keep to few cells and
// strong lines, large ones get more cells, cell contents and a pencil with ferrule and graphite.
void drawTableEdit(QPainter &p, int n)
{
    const qreal s = n / 16.0;
    const int line = std::max(1, int(std::lround(n / 32.0)));
    const qreal half = line / 2.0;
    auto snap = [&](qreal v) { return std::round(v * s); };

    const int left = 0;
    const int top = int(snap(1));
    const int right = int(snap(14));
    const int bottom = int(snap(13));
    const int headerBottom = int(snap(4.5));
    const int cols = n < 48 ? 3 : 4;
    const int rows = n < 32 ? 2 : (n < 64 ? 3 : 4);

    // sheet and header
    p.setPen(Qt::NoPen);
    p.fillRect(QRect(left, top, right - left, bottom - top), paper);
    p.fillRect(QRect(left, top, right - left, headerBottom - top), blue);
    // grid
    const QColor gridColor = lightGrey;
    for (int c = 1; c < cols; ++c) {
        const int x = left + int(std::round((right - left) * c / qreal(cols)));
        p.fillRect(QRect(x - line / 2, headerBottom, line, bottom - headerBottom), gridColor);
        p.fillRect(QRect(x - line / 2, top, line, headerBottom - top), blueDark);
    }
    for (int r = 1; r < rows; ++r) {
        const int y = headerBottom + int(std::round((bottom - headerBottom) * r / qreal(rows)));
        p.fillRect(QRect(left, y - line / 2, right - left, line), gridColor);
    }
    // something written in the cells
    if (n >= 48) {
        const int cellH = (bottom - headerBottom) / rows;
        const int cellW = (right - left) / cols;
        const int barH = std::max(2, cellH / 5);
        for (int r = 0; r < rows; ++r) {
            for (int c = 0; c < cols; ++c) {
                const int x = left + int(std::round((right - left) * c / qreal(cols))) + cellW / 5;
                const int y
                    = headerBottom + int(std::round((bottom - headerBottom) * r / qreal(rows))) + (cellH - barH) / 2;
                const int w = cellW * (c % 2 ? 2 : 3) / 5 - ((r + c) % 3) * cellW / 10;
                p.fillRect(QRect(x, y, w, barH), paperShade.darker(115));
            }
        }
        const int barW = cellW * 3 / 5;
        for (int c = 0; c < cols; ++c) {
            const int x = left + int(std::round((right - left) * c / qreal(cols))) + cellW / 5;
            const int y = top + (headerBottom - top - barH) / 2;
            p.fillRect(QRect(x, y, barW - (c % 2) * cellW / 5, barH), blueLight);
        }
    }
    // frame
    p.setBrush(Qt::NoBrush);
    p.setPen(pen(ink, line, Qt::SquareCap));
    p.drawRect(QRectF(left + half, top + half, right - left - line, bottom - top - line));

    // the pencil, kept apart from the table by a thin gap
    const QPointF tip = QPointF(snap(6.6), snap(15.2));
    const qreal length = (n < 32 ? 11.5 : 11) * s;
    const qreal width = (n < 32 ? 3.6 : 3.0) * s;
    const qreal outline = n < 32 ? 0.8 : std::max(1.0, n / 40.0);
    knockOut(p, pencilShape(tip, length, width), std::max(0.8, n / 24.0));
    pencil(p, tip, length, width, outline, n >= 32);
}

void iconTableEdit(QPainter &p)
{
    drawTableEdit(p, 16);
}

// ---------------------------------------------------------------------------------------------------
// Icons for finding, problems and moving through and around the tree

void iconFind(QPainter &p)
{
    // the handle, under the lens
    p.setPen(pen(brownDark, 3.6));
    p.drawLine(QPointF(10.5, 10.5), QPointF(13.8, 13.8));
    p.setPen(pen(brown, 1.8));
    p.drawLine(QPointF(10.8, 10.8), QPointF(13.8, 13.8));
    // the lens with its rim and a glint
    p.setPen(pen(slate, 1.5));
    p.setBrush(blueLight);
    p.drawEllipse(QPointF(6.5, 6.5), 4.8, 4.8);
    p.setPen(pen(paper, 1.2));
    p.setBrush(Qt::NoBrush);
    p.drawArc(QRectF(3.6, 3.6, 5.8, 5.8), 100 * 16, 70 * 16);
}

// A warning sign in the upper left corner and a vertical arrow in the lower right, pointing down
// (to the next problem) or up (to the previous one).
void problemArrow(QPainter &p, bool down)
{
    QPainterPath triangle;
    triangle.moveTo(6, 0.8);
    triangle.lineTo(11.6, 11.5);
    triangle.lineTo(0.4, 11.5);
    triangle.closeSubpath();
    p.setPen(pen(orangeDark));
    p.setBrush(yellow);
    p.drawPath(triangle);
    fill(p, 5, 4, 2, 4, ink);
    fill(p, 5, 9, 2, 2, ink);

    QPainterPath arrow;
    arrow.moveTo(11.5, 7.5);
    arrow.lineTo(13.5, 7.5);
    arrow.lineTo(13.5, 11.5);
    arrow.lineTo(15.5, 11.5);
    arrow.lineTo(12.5, 15.5);
    arrow.lineTo(9.5, 11.5);
    arrow.lineTo(11.5, 11.5);
    arrow.closeSubpath();
    if (!down) {
        // the same arrow turned over within its own rows (7.5 to 15.5)
        QTransform flip;
        flip.translate(0, 23);
        flip.scale(1, -1);
        arrow = flip.map(arrow);
    }
    knockOut(p, arrow, 0.8);
    p.setPen(pen(blueDark));
    p.setBrush(blue);
    p.drawPath(arrow);
}

void iconNextProblem(QPainter &p)
{
    problemArrow(p, true);
}

void iconPreviousProblem(QPainter &p)
{
    problemArrow(p, false);
}

// Two tree nodes, one behind the other, the front one with the expander's plus or minus.
void stackedNodes(QPainter &p, bool plus)
{
    p.setPen(pen(grey));
    p.setBrush(paperShade);
    p.drawRect(QRectF(4.5, 0.5, 11, 11));
    p.setPen(pen(ink));
    p.setBrush(paper);
    p.drawRect(QRectF(0.5, 4.5, 11, 11));
    fill(p, 3, 9, 6, 2, blueDark);
    if (plus)
        fill(p, 5, 7, 2, 6, blueDark);
}

void iconExpandAll(QPainter &p)
{
    stackedNodes(p, true);
}

void iconCollapseAll(QPainter &p)
{
    stackedNodes(p, false);
}

// An arrow pointing up beside three rows, the top one highlighted; upside down it moves down.
void moveArrow(QPainter &p, bool up)
{
    if (!up) {
        p.translate(0, 16);
        p.scale(1, -1);
    }
    for (int i = 0; i < 3; ++i)
        fill(p, 12, 2 + 5 * i, 4, 2, i == 0 ? blue : lineGrey);
    QPainterPath arrow;
    arrow.moveTo(5.5, 0.5);
    arrow.lineTo(10.5, 5.5);
    arrow.lineTo(7.5, 5.5);
    arrow.lineTo(7.5, 15.5);
    arrow.lineTo(3.5, 15.5);
    arrow.lineTo(3.5, 5.5);
    arrow.lineTo(0.5, 5.5);
    arrow.closeSubpath();
    p.setPen(pen(blueDark));
    p.setBrush(blue);
    p.drawPath(arrow);
}

void iconMoveUp(QPainter &p)
{
    moveArrow(p, true);
}

void iconMoveDown(QPainter &p)
{
    moveArrow(p, false);
}

void iconEdit(QPainter &p)
{
    pencil(p, QPointF(1.5, 14.5), 16, 4.6, 0.8, true);
}

struct Icon {
    const char *name;
    void (*draw)(QPainter &);
    /// For an icon drawn for its size rather than scaled: draws it `size` pixels wide.
    void (*drawSized)(QPainter &, int size) = nullptr;
};

const std::vector<Icon> &icons()
{
    static const std::vector<Icon> list = {
        { "i16_empty", iconEmpty },
        { "i16_data", iconData },
        { "i16_int", iconInt },
        { "i16_bool", iconBool },
        { "i16_string", iconString },
        { "i16_date", iconDate },
        { "i16_time", iconTime },
        { "i16_datetime", iconDateTime },
        { "i16_list_bullets", iconListBullets },
        { "i16_network", iconNetwork },
        { "i16_list", iconList },
        { "i16_question", iconQuestion },
        { "i16_answer", iconAnswer },
        { "i16_message", iconMessage },
        { "i16_point", iconPoint },
        { "i16_rect", iconRect },
        { "i16_size", iconSize },
        { "i16_folder", iconFolder },
        { "i16_tiny_bullet", iconTinyBullet },
        { "i16_folder_open", iconFolderOpen },
        { "i16_save", iconSave },
        { "i16_save_as", iconSaveAs },
        { "i16_exit", iconExit },
        { "i16_add", iconAdd },
        { "i16_remove", iconRemove },
        { "i16_cut", iconCut },
        { "i16_copy", iconCopy },
        { "i16_paste", iconPaste },
        { "i16_undo", iconUndo },
        { "i16_redo", iconRedo },
        { "i16_undo_history", iconUndoHistory },
        { "i16_bomb", iconBomb },
        { "i16_header", iconHeader },
        { "i16_lua", iconLua },
        { "i16_font", iconFont },
        { "i16_table_edit", iconTableEdit, drawTableEdit },
        { "i16_find", iconFind },
        { "i16_next_problem", iconNextProblem },
        { "i16_previous_problem", iconPreviousProblem },
        { "i16_expand_all", iconExpandAll },
        { "i16_collapse_all", iconCollapseAll },
        { "i16_move_up", iconMoveUp },
        { "i16_move_down", iconMoveDown },
        { "i16_edit", iconEdit },
    };
    return list;
}

const int appIconSizes[] = { 16, 32, 48, 64, 128, 256 };

QImage render(int size, const std::function<void(QPainter &)> &draw)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    draw(p);
    p.end();
    return image.convertToFormat(QImage::Format_ARGB32);
}

// The icon at 16 pixels (scale 1) or at 32 (scale 2).
QImage renderIcon(const Icon &icon, int scale = 1)
{
    if (icon.drawSized)
        return render(16 * scale, [&](QPainter &p) { icon.drawSized(p, 16 * scale); });
    drawScale = scale;
    const QImage image = render(16 * scale, [&](QPainter &p) {
        p.scale(scale, scale);
        icon.draw(p);
    });
    drawScale = 1;
    return image;
}

QImage renderAppIcon(int size)
{
    return render(size, [&](QPainter &p) { drawTableEdit(p, size); });
}

bool save(const QImage &image, const QString &path)
{
    if (!QDir().mkpath(QFileInfo(path).absolutePath()) || !image.save(path, "PNG")) {
        QTextStream(stderr) << "drawicons: cannot write " << path << '\n';
        return false;
    }
    return true;
}

bool writeAll(const QString &folder)
{
    bool ok = true;
    for (const Icon &icon : icons()) {
        ok = save(renderIcon(icon), folder + "/icons/" + icon.name + ".png") && ok;
        ok = save(renderIcon(icon, 2), folder + "/icons/" + icon.name + "@2x.png") && ok;
    }
    for (int size : appIconSizes) {
        ok = save(renderAppIcon(size), QString("%1/hicolor/%2x%2/apps/zatedit.png").arg(folder).arg(size)) && ok;
    }
    return ok;
}

void checker(QPainter &p, const QRect &r, int square)
{
    p.fillRect(r, QColor(0xf4, 0xf4, 0xf4));
    for (int y = r.top(); y < r.bottom(); y += square) {
        for (int x = r.left(); x < r.right(); x += square) {
            if (((x - r.left()) / square + (y - r.top()) / square) % 2)
                p.fillRect(QRect(x, y, square, square).intersected(r), QColor(0xe2, 0xe2, 0xe2));
        }
    }
}

// Review sheet: every icon enlarged to 128 pixels (nearest neighbour) on a checker board with its
// name, the 16 pixel icon 8 times on the left and its 32 pixel version 4 times on the right; then the
// icons at their real sizes, 16 and 32, on white, dark and two blue backgrounds; then the
// application icon.
bool writeSheet(const QString &path)
{
    const int big = 128;
    const int columns = 6;
    const int cellW = 2 * big + 8 + 24;
    const int cellH = big + 28;
    const int count = int(icons().size());
    const int gridRows = (count + columns - 1) / columns;
    const int stripTop = gridRows * cellH + 12;
    const int stripH16 = 16 + 12;
    const int stripH32 = 32 + 12;
    const int appTop = stripTop + 4 * stripH16 + 4 * stripH32 + 12;
    const int width = std::max(columns * cellW + 12, 8 + count * (32 + 6));
    const int height = appTop + 256 + 24;

    QImage sheetImage(width, height, QImage::Format_ARGB32_Premultiplied);
    sheetImage.fill(QColor(0xfa, 0xfa, 0xfa));
    QPainter p(&sheetImage);
    QFont font = p.font();
    font.setPixelSize(12);
    p.setFont(font);
    for (int i = 0; i < count; ++i) {
        const Icon &icon = icons()[size_t(i)];
        const int x = 6 + (i % columns) * cellW + 12;
        const int y = 6 + (i / columns) * cellH;
        const QRect small(x, y, big, big);
        const QRect large(x + big + 8, y, big, big);
        checker(p, small, 8);
        checker(p, large, 8);
        p.drawImage(small, renderIcon(icon).scaled(big, big, Qt::IgnoreAspectRatio, Qt::FastTransformation));
        p.drawImage(large, renderIcon(icon, 2).scaled(big, big, Qt::IgnoreAspectRatio, Qt::FastTransformation));
        p.setPen(Qt::black);
        p.drawText(QRect(x - 12, y + big + 2, cellW, 20),
                   Qt::AlignHCenter | Qt::AlignTop,
                   QString::fromLatin1(icon.name));
    }
    const QColor backgrounds[]
        = { Qt::white, QColor(0x2b, 0x2b, 0x2b), QColor(0xdd, 0xe6, 0xf2), QColor(0x30, 0x5a, 0x9e) };
    int y = stripTop;
    for (int scale : { 1, 2 }) {
        const int size = 16 * scale;
        for (const QColor &background : backgrounds) {
            p.fillRect(QRect(0, y, width, size + 12), background);
            for (int i = 0; i < count; ++i)
                p.drawImage(QPoint(8 + i * (size + 6), y + 6), renderIcon(icons()[size_t(i)], scale));
            y += size + 12;
        }
    }
    int x = 8;
    for (int size : appIconSizes) {
        checker(p, QRect(x, appTop, size, size), 8);
        p.drawImage(QPoint(x, appTop), renderAppIcon(size));
        x += size + 12;
    }
    p.end();
    return save(sheetImage, path);
}

} // namespace

int main(int argc, char **argv)
{
    // drawing needs no display; the sheet's labels need the font database of a GUI application
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);

    QCommandLineParser parser;
    parser.setApplicationDescription("Draws the icons of zatedit.");
    parser.addHelpOption();
    QCommandLineOption outputOption("output", "Write icons/ and hicolor/ into <folder>.", "folder");
    QCommandLineOption sheetOption("sheet", "Write a contact sheet for review to <file>.", "file");
    parser.addOption(outputOption);
    parser.addOption(sheetOption);
    parser.process(app);
    if (!parser.isSet(outputOption) && !parser.isSet(sheetOption)) {
        QTextStream(stderr) << "drawicons: give --output <folder> and/or --sheet <file>\n";
        return 2;
    }
    bool ok = true;
    if (parser.isSet(outputOption))
        ok = writeAll(parser.value(outputOption)) && ok;
    if (parser.isSet(sheetOption))
        ok = writeSheet(parser.value(sheetOption)) && ok;
    return ok ? 0 : 1;
}
