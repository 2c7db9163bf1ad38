// SPDX-License-Identifier: MIT
#include "apps/gallery/Gallery.h"

#include "apps/tables/Errors.h"
#include "framework/core/Paths.h"
#include "framework/gui/QtInterop.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QWidget>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

namespace gallery {
namespace {

constexpr double kShareOfScreen = 0.9; // the rest is for the window's frame and what is beside it

std::optional<Frame::Key> KeyOf(int key)
{
    switch (key) {
    case Qt::Key_Space:
        return Frame::Key::Pause;
    case Qt::Key_Left:
    case Qt::Key_Up:
        return Frame::Key::Back;
    case Qt::Key_Right:
    case Qt::Key_Down:
        return Frame::Key::Forward;
    case Qt::Key_Escape:
        return Frame::Key::Close;
    default:
        return {};
    }
}

// Belongs to the widget of the frame.
class Keys : public QObject
{
public:
    explicit Keys(Frame& frame) : QObject(framework::NativeWidget(frame)), m_frame(frame)
    {
        parent()->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::KeyPress) return QObject::eventFilter(watched, event);
        const std::optional<Frame::Key> key = KeyOf(static_cast<QKeyEvent*>(event)->key());
        if (!key) return QObject::eventFilter(watched, event);
        if (*key == Frame::Key::Close) // not inside an event of the widget that ends
            QMetaObject::invokeMethod(
                parent(), [&frame = m_frame] { frame.Press(Frame::Key::Close); },
                Qt::QueuedConnection);
        else
            m_frame.Press(*key);
        return true;
    }

private:
    Frame& m_frame;
};

} // namespace

std::string ExampleLog()
{
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    return (program.parent_path() / TILTPOLE_LOG_FOLDER / "pole-replay.csv")
        .lexically_normal()
        .string();
}

bool KeepViews()
{
    const CString folder = framework::ApplicationStateFolder();
    framework::SetModulePath(folder + L"/tiltpole-gallery");
    return framework::MakeFolder(folder);
}

double ScaleOfScreen()
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    if (!screen) return 1.0;
    const double ratio = screen->devicePixelRatio();
    const QSize free = screen->availableSize(); // in units
    return ratio
           * std::min({1.0, kShareOfScreen * free.width() / Frame::kWidth,
                       kShareOfScreen * free.height() / Frame::kHeight});
}

void ListenToKeys(Frame& frame)
{
    new Keys(frame); // owned by the widget
}

int RunWindow(framework::Application& application, std::vector<ReplaySample> replay)
{
    Frame frame(std::move(replay));
    if (!frame.Open(ScaleOfScreen())) throw tables::InputError("the window cannot be opened");
    ListenToKeys(frame);
    return application.Run();
}

} // namespace gallery
