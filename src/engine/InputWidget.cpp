#include "engine/InputWidget.h"

#include "engine/Viewer.h"

InputWidget::InputWidget(Viewer* owner) : PositionedWidget(owner)
{
    if (Owner != nullptr)
        Owner->AddInputWidget(this);
}

InputWidget::~InputWidget()
{
    if (Owner != nullptr)
        Owner->RemoveInputWidget(this);
}

bool InputWidget::OnEvent(platform::WindowHandle, std::uint32_t, std::uintptr_t, std::intptr_t, const PointF&)
{
    return false;
}

bool InputWidget::Notify(std::uint32_t code, const WideString& text)
{
    if (Owner == nullptr)
        return false;
    WidgetEvent event;
    event.Name = text.IsEmpty() ? GetName() : text;
    event.Id = GetId();
    event.Code = code;
    return Owner->PostEvent(event);
}

void InputWidget::Repaint()
{
    if (Owner != nullptr && Owner->PaintRect(GetRect()))
        Owner->Flush(false, false);
}

WindowWidget::WindowWidget(Viewer* owner) : InputWidget(owner)
{
    if (Owner != nullptr)
        Owner->AddWindowWidget(this);
}

WindowWidget::~WindowWidget()
{
    if (Owner != nullptr)
        Owner->RemoveWindowWidget(this);
}
