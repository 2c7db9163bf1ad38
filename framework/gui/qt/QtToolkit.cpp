// SPDX-License-Identifier: MIT
//
// The port to Qt: fonts, windows, the connection and its message box.
#include "framework/core/AtomicFile.h"
#include "framework/core/MessageBox.h"
#include "framework/gui/Application.h"
#include "framework/gui/QtInterop.h"
#include "framework/gui/detail/WindowRegistry.h"
#include "framework/gui/qt/QtWindow.h"

#include <QApplication>
#include <QBuffer>
#include <QByteArray>
#include <QEvent>
#include <QFont>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QImage>
#include <QMessageBox>
#include <QPainter>
#include <QThread>
#include <QVariant>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <utility>

namespace framework {
namespace {

constexpr int kUsualCellHeight = 16; // pixels, for fonts without a height
constexpr int kUsualWeight = 400;
constexpr int kTallest = 4096; // pixels; Qt measures larger fonts wrongly

QString ToQString(std::wstring_view text)
{
    return QString::fromWCharArray(text.data(), static_cast<qsizetype>(text.size()));
}

// The largest font with cells at most `height` pixels high, or with characters of `-height` pixels.
QFont MakeFont(const FontRequest& request)
{
    // The requested face where the system has it; else the face of the reference pictures.
    const QString face = ToQString(request.face);
    QFont font(!face.isEmpty() && QFontDatabase::hasFamily(face) ? face
                                                                 : QStringLiteral("DejaVu Sans"));
    font.setStyleHint(QFont::SansSerif);
    font.setStyleStrategy(QFont::NoAntialias);
    font.setHintingPreference(QFont::PreferVerticalHinting); // at every scale
    font.setWeight(static_cast<QFont::Weight>(
        std::clamp(request.weight > 0 ? request.weight : kUsualWeight, 1, 1000)));
    font.setItalic(request.italic);
    const int height = std::clamp(request.height, -kTallest, kTallest);
    if (height < 0) {
        font.setPixelSize(-height);
        return font;
    }
    const int cell = height ? height : kUsualCellHeight;
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
        return {metrics.horizontalAdvance(ToQString(text)), metrics.height(), metrics.ascent()};
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
        QByteArray bytes;
        QBuffer buffer(&bytes);
        errno = ENOMEM;
        if (!buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG")) return false;
        FileReplacement file(utf8Path);
        const std::string_view content(bytes.constData(), static_cast<std::size_t>(bytes.size()));
        const bool isSaved = file.Write(content) && file.Commit();
        errno = file.Error();
        return isSaved;
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

// A modal window needs an application that has windows, and somebody who can press its button.
bool CanShowBox()
{
    const auto* const application = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (!application || QThread::currentThread() != application->thread()) return false;
    const QString platform = QGuiApplication::platformName();
    return !platform.startsWith(QStringLiteral("offscreen"))
           && !platform.startsWith(QStringLiteral("minimal"));
}

int ShowBox(const wchar_t* text, const wchar_t* title, unsigned style)
{
    QMessageBox box;
    box.setWindowTitle(ToQString(title));
    box.setText(ToQString(text));
    switch (style & 0xF0U) {
    case MB_ICONQUESTION:
        box.setIcon(QMessageBox::Question);
        break;
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
    switch (style & 0x0FU) {
    case MB_OKCANCEL:
        box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
        break;
    case MB_YESNOCANCEL:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        break;
    case MB_YESNO:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        break;
    case MB_RETRYCANCEL:
        box.setStandardButtons(QMessageBox::Retry | QMessageBox::Cancel);
        break;
    default:
        box.setStandardButtons(QMessageBox::Ok);
        break;
    }
    switch (box.exec()) {
    case QMessageBox::Yes:
        return IDYES;
    case QMessageBox::No:
        return IDNO;
    case QMessageBox::Retry:
        return IDRETRY;
    case QMessageBox::Cancel:
        return IDCANCEL;
    default:
        return IDOK;
    }
}

constexpr const char* kPlatform = "QT_QPA_PLATFORM";

// Chooses the platform without a screen for an application that is made meanwhile. Other programs
// that this one starts find the environment as it was.
class WithoutScreen
{
public:
    WithoutScreen() : m_wasSet(qEnvironmentVariableIsSet(kPlatform)), m_before(qgetenv(kPlatform))
    {
        qputenv(kPlatform, "offscreen");
    }
    WithoutScreen(const WithoutScreen&) = delete;
    WithoutScreen& operator=(const WithoutScreen&) = delete;
    ~WithoutScreen()
    {
        if (m_wasSet)
            qputenv(kPlatform, m_before);
        else
            qunsetenv(kPlatform);
    }

private:
    bool m_wasSet;
    QByteArray m_before;
};

// Opens a connection; null if the host has one.
std::unique_ptr<QApplication> Connect(int& argc, char** argv, Display display)
{
    if (QCoreApplication::instance()) return nullptr;
    std::optional<WithoutScreen> chosen;
    if (display == Display::Memory || !ScreenAnswers()) chosen.emplace();
    QApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    return std::make_unique<QApplication>(argc, argv);
}

constexpr const char* kEndsWindows = "tiltpole.endsWindows";

// The widgets of windows must not outlive the toolkit's application, whoever made it.
void EndWindowsWithTheApplication()
{
    // A host that calls exit() ends its static objects, not the application.
    [[maybe_unused]] static const int atEnd = std::atexit(LeaveWindows);
    QCoreApplication* const application = QCoreApplication::instance();
    if (application->property(kEndsWindows).isValid()) return;
    application->setProperty(kEndsWindows, true);
    qAddPostRoutine([] {
        DestroyWindowsOf(0);
        // Widgets that were still in use when their windows ended.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    });
}

} // namespace

Toolkit* CurrentToolkit()
{
    static QtToolkit toolkit;
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) return nullptr;
    EndWindowsWithTheApplication();
    return &toolkit;
}

struct Application::Connection
{
    std::unique_ptr<QApplication> application;
    MessageBoxHandler previousHandler;
    int number = 0; // of the applications that exist, this one included
};

Application::Application(int& argc, char** argv, Display display)
    : m_connection(std::make_unique<Connection>())
{
    m_connection->application = Connect(argc, argv, display);
    MessageBoxHandler previous = SetMessageBoxHandler({});
    try {
        m_connection->previousHandler = previous;
        SetMessageBoxHandler([previous](const wchar_t* text, const wchar_t* title, unsigned style) {
            return CanShowBox() ? ShowBox(text, title, style) : previous(text, title, style);
        });
    } catch (...) {
        SetMessageBoxHandler(std::move(previous));
        throw;
    }
    m_connection->number = ++Windows().applications;
}

Application::~Application()
{
    SetMessageBoxHandler(std::move(m_connection->previousHandler));
    DestroyWindowsOf(m_connection->number);
    --Windows().applications;
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
