#include "CameraCanvas.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <vtkCommand.h>
#include <vtkGenericOpenGLRenderWindow.h>
#include <vtkGenericRenderWindowInteractor.h>
#include <vtkOpenGLState.h>
#include <vtkRenderer.h>
#include <vtkUnsignedCharArray.h>

namespace lodex {

namespace {

/// Calls a function for a VTK event.
class Call final : public vtkCommand {
public:
    static vtkSmartPointer<Call> make(std::function<void(void*)> what)
    {
        auto call = vtkSmartPointer<Call>::Take(new Call);
        call->what_ = std::move(what);
        return call;
    }
    void Execute(vtkObject*, unsigned long, void* data) override { what_(data); }

private:
    std::function<void(void*)> what_;
};

} // namespace

CameraCanvas::CameraCanvas(vtkRenderer& renderer, std::function<void(const QSize&)> prepare, QWidget* parent)
    : QOpenGLWidget(parent), renderer_(renderer), prepare_(std::move(prepare))
{
    setObjectName(QStringLiteral("camera_canvas"));
    window_->SetReadyForRendering(false);
    window_->SetOwnContext(0);
    window_->SetFrameBlitModeToBlitToCurrent();
    window_->SetMultiSamples(0);
    window_->AddRenderer(&renderer_);
    window_->AddObserver(vtkCommand::WindowMakeCurrentEvent, Call::make([this](void*) { make_current(); }));
    window_->AddObserver(vtkCommand::WindowIsCurrentEvent, Call::make([this](void* answer) {
                             *static_cast<bool*>(answer) = context() && QOpenGLContext::currentContext() == context();
                         }));
    window_->AddObserver(vtkCommand::WindowSupportsOpenGLEvent,
                         Call::make([](void* answer) { *static_cast<int*>(answer) = 1; }));
    window_->AddObserver(vtkCommand::WindowIsDirectEvent,
                         Call::make([](void* answer) { *static_cast<int*>(answer) = 1; }));
    interactor_->SetInteractorStyle(nullptr); // the mouse is the view's business
    interactor_->SetRenderWindow(window_);
    interactor_->EnableRenderOff();
    interactor_->AddObserver(vtkCommand::RenderEvent, Call::make([this](void*) { update(); }));
}

CameraCanvas::~CameraCanvas()
{
    if (context()) {
        makeCurrent();
        disconnect(context_gone_);
        release();
        doneCurrent();
    }
    window_->RemoveAllObservers();
    interactor_->RemoveAllObservers();
    window_->RemoveRenderer(&renderer_);
}

void CameraCanvas::request()
{
    interactor_->Render();
}

void CameraCanvas::make_current()
{
    // Making a current context current again would bind the widget's framebuffer in the middle of a picture.
    if (isValid() && QOpenGLContext::currentContext() != context())
        makeCurrent();
}

void CameraCanvas::release()
{
    window_->Finalize();
    window_->SetReadyForRendering(false);
}

void CameraCanvas::initializeGL()
{
    disconnect(context_gone_);
    context_gone_ = connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, [this] {
        makeCurrent();
        release();
        doneCurrent();
    });
    window_->SetReadyForRendering(true);
    window_->SetMapped(1);
    window_->OpenGLInit();
}

void CameraCanvas::resizeGL(int width, int height)
{
    const double ratio = devicePixelRatioF();
    window_->SetSize(std::max(1, qRound(width * ratio)), std::max(1, qRound(height * ratio)));
}

void CameraCanvas::paintGL()
{
    // Qt has changed the state behind the back of VTK's book-keeping.
    vtkOpenGLState* const state = window_->GetState();
    state->Reset();
    state->Push();
    state->vtkglDepthFunc(GL_LEQUAL);
    const int* const size = window_->GetSize();
    prepare_({size[0], size[1]});
    window_->Render();
    state->Pop();
    Q_EMIT drawn();
}

QImage CameraCanvas::picture(const QSize& size)
{
    if (size.isEmpty())
        return {};
    if (!isValid())
        (void)grabFramebuffer(); // a widget that was never shown gets its context this way
    if (!isValid())
        return {};
    makeCurrent();
    GLint largest = 0;
    context()->functions()->glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &largest);
    QImage image;
    if (size.width() <= largest && size.height() <= largest) {
        const QSize former(window_->GetSize()[0], window_->GetSize()[1]);
        vtkOpenGLState* const state = window_->GetState();
        state->Reset();
        state->Push();
        state->vtkglDepthFunc(GL_LEQUAL);
        window_->SetFrameBlitModeToNoBlit();
        window_->SetSize(size.width(), size.height());
        prepare_(size);
        window_->Render();
        vtkNew<vtkUnsignedCharArray> pixels;
        if (window_->GetPixelData(0, 0, size.width() - 1, size.height() - 1, 0, pixels, 0)) {
            image = QImage(size, QImage::Format_RGB888);
            for (int y = 0; y < size.height(); ++y) {
                const auto row = static_cast<std::size_t>(size.height() - 1 - y); // from the bottom upwards
                std::copy_n(pixels->GetPointer(0) + 3 * row * static_cast<std::size_t>(size.width()), 3 * size.width(),
                            image.scanLine(y));
            }
        }
        window_->SetFrameBlitModeToBlitToCurrent();
        window_->SetSize(former.width(), former.height());
        state->Pop();
    }
    doneCurrent();
    update();
    return image;
}

} // namespace lodex
