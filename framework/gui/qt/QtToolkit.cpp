// SPDX-License-Identifier: MIT
//
// The port to Qt: fonts, windows, the connection and its message box.
#include "framework/core/MessageBox.h"
#include "framework/gui/Application.h"
#include "framework/gui/QtInterop.h"
#include "framework/gui/detail/WindowRegistry.h"
#include "framework/gui/qt/QtWindow.h"

#include <QApplication>
#include <QFont>
#include <QFontMetrics>
#include <QImage>
#include <QMessageBox>
#include <QPainter>
#include <QSaveFile>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace framework {
namespace {

constexpr int kUsualCellHeight = 16; // pixels, for fonts without a height
constexpr int kUsualWeight = 400;

QString ToQString(std::wstring_view text)
{
    return QString::fromWCharArray(text.data(), static_cast<qsizetype>(text.size()));
}

// The largest font with cells at most `height` pixels high, or with characters of `-height` pixels.
QFont MakeFont(const FontRequest& request)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setStyleHint(QFont::SansSerif);
    font.setStyleStrategy(QFont::NoAntialias);
    font.setWeight(static_cast<QFont::Weight>(
        std::clamp(request.weight > 0 ? request.weight : kUsualWeight, 1, 1000)));
    font.setItalic(request.italic);
    if (request.height < 0) {
        font.setPixelSize(-request.height);
        return font;
    }
    const int cell = request.height ? request.height : kUsualCellHeight;
    int size = cell;
    font.setPixelSize(size);
    while (size > 1 && QFontMetrics(font).height() > cell)
        font.setPixelSize(--size);
    return font;
}

class QtToolkit : public Toolkit
{
public:
    std::unique_ptr<NativeWindow> MakeWindow(WindowEvents& events, NativeWindow* parent) override
    {
        return std::make_unique<QtWindow>(events, parent ? static_cast<QWidget*>(parent->Handle())
                                                         : nullptr);
    }

    TextExtent Measure(const FontRequest& request, std::wstring_view text) override
    {
        const QFontMetrics metrics(FontOf(request));
        return {metrics.horizontalAdvance(ToQString(text)), metrics.height()};
    }

    void DrawText(const raster::Canvas& canvas, const FontRequest& request, raster::Color color,
                  raster::Point at, std::wstring_view text) override
    {
        const raster::Box& clip = canvas.clip;
        if (clip.left >= clip.right || clip.top >= clip.bottom) return;
        raster::Color* const corner =
            canvas.pixels + static_cast<std::ptrdiff_t>(clip.top) * canvas.stride + clip.left;
        QImage image(reinterpret_cast<uchar*>(corner), clip.right - clip.left,
                     clip.bottom - clip.top, static_cast<qsizetype>(canvas.stride) * 4,
                     QImage::Format_RGB32);
        QPainter painter(&image);
        const QFont& font = FontOf(request);
        painter.setFont(font);
        painter.setPen(QColor::fromRgb(color));
        painter.setRenderHint(QPainter::TextAntialiasing, false);
        painter.drawText(at.x - clip.left, at.y - clip.top + QFontMetrics(font).ascent(),
                         ToQString(text));
    }

    bool SavePng(const raster::Canvas& canvas, const std::string& utf8Path) override
    {
        const QImage image(reinterpret_cast<const uchar*>(canvas.pixels), canvas.clip.right,
                           canvas.clip.bottom, static_cast<qsizetype>(canvas.stride) * 4,
                           QImage::Format_RGB32);
        QSaveFile file(QString::fromStdString(utf8Path));
        return file.open(QIODevice::WriteOnly) && image.save(&file, "PNG") && file.commit();
    }

private:
    const QFont& FontOf(const FontRequest& request)
    {
        for (const auto& [known, font] : m_fonts)
            if (known == request) return font;
        if (m_fonts.size() == kKeptFonts) m_fonts.erase(m_fonts.begin());
        return m_fonts.emplace_back(request, MakeFont(request)).second;
    }

    static constexpr std::size_t kKeptFonts = 16;
    std::vector<std::pair<FontRequest, QFont>> m_fonts;
};

int ShowMessageBox(const wchar_t* text, const wchar_t* title, unsigned style)
{
    QMessageBox box;
    box.setWindowTitle(ToQString(title));
    box.setText(ToQString(text));
    switch (style & 0xF0U) {
    case MB_ICONSTOP:
        box.setIcon(QMessageBox::Critical);
        break;
    case MB_ICONEXCLAMATION:
        box.setIcon(QMessageBox::Warning);
        break;
    case MB_ICONINFORMATION:
        box.setIcon(QMessageBox::Information);
        break;
    default:
        break;
    }
    box.exec();
    return IDOK;
}

bool NamesAScreen()
{
    const char* const names[] = {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "DISPLAY"};
    return std::any_of(std::begin(names), std::end(names),
                       [](const char* name) { return qEnvironmentVariableIsSet(name); });
}

// Opens a connection; null if the host has one.
std::unique_ptr<QApplication> Connect(int& argc, char** argv, Display display)
{
    if (QCoreApplication::instance()) return nullptr;
    if (display == Display::None || !NamesAScreen()) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    return std::make_unique<QApplication>(argc, argv);
}

} // namespace

Toolkit* CurrentToolkit()
{
    static QtToolkit toolkit;
    return qobject_cast<QApplication*>(QCoreApplication::instance()) ? &toolkit : nullptr;
}

struct Application::Connection
{
    std::unique_ptr<QApplication> application;
    MessageBoxHandler previousHandler;
};

Application::Application(int& argc, char** argv, Display display)
    : m_connection(std::make_unique<Connection>())
{
    m_connection->application = Connect(argc, argv, display);
    m_connection->previousHandler = SetMessageBoxHandler(ShowMessageBox);
}

Application::~Application()
{
    SetMessageBoxHandler(std::move(m_connection->previousHandler));
    while (!Windows().windows.empty())
        Destroy(Windows().windows.front().get());
}

int Application::Run()
{
    return QApplication::exec();
}

void Application::Quit(int result)
{
    QCoreApplication::exit(result);
}

void Application::DispatchPending()
{
    QCoreApplication::processEvents();
}

QWidget* NativeWidget(CWnd& window)
{
    if (!window.m_hWnd || !window.m_hWnd->native) return nullptr;
    return static_cast<QWidget*>(window.m_hWnd->native->Handle());
}

} // namespace framework
