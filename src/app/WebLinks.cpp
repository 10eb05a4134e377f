#include "app/WebLinks.h"

#include "platform/Shell.h"

namespace {

// The maker's web site. The reserved example domain stands in until the
// site's own address is known.
constexpr char16_t kSiteAddress[] = u"http://www.sondara.example";
constexpr char16_t kSearchPath[] = u"/search.php?query=";
constexpr char16_t kReleaseNotePath[] = u"/press_release.php?file_name=sondara_";

constexpr std::intptr_t kShellSuccess = 32;

} // namespace

bool OpenUrl(platform::WindowHandle owner, const WideString& url)
{
    if (owner == nullptr || !platform::IsLiveWindow(owner))
        return false;
    const WideString escaped = url.Replaced(u"&", u"%26");
    return platform::OpenWithShell(owner, u"open", escaped.View(), platform::kShowNormal) >= kShellSuccess;
}

// The result isn't looked at: when no browser comes, the user sees nothing.
void OpenAddress(const WideString& url)
{
    const platform::WindowHandle desktop = platform::GetDesktop();
    WindowDisabler disabler(desktop);
    OpenUrl(desktop, url);
}

Array<WideString> ReportLines(const WideString& report)
{
    Array<WideString> lines;
    std::u16string_view rest = report.View();
    while (!rest.empty()) {
        const std::size_t start = rest.find_first_not_of(u"\r\n");
        if (start == std::u16string_view::npos)
            break;
        rest.remove_prefix(start);
        const std::size_t end = rest.find_first_of(u"\r\n");
        lines.Add(WideString(rest.substr(0, end)));
        if (end == std::u16string_view::npos)
            break;
        rest.remove_prefix(end);
    }
    return lines;
}

WideString SearchAddress(const WideString& line)
{
    return WideString(kSiteAddress) + kSearchPath + line;
}

WideString ReleaseNoteAddress(const WideString& versionText)
{
    return WideString(kSiteAddress) + kReleaseNotePath + versionText.Replaced(u".", u"");
}

WindowDisabler::WindowDisabler(platform::WindowHandle window) : window(window)
{
    if (!platform::IsLiveWindow(window)) {
        this->window = platform::GetDesktop();
        reenable = true;
    } else if (window == platform::GetDesktop()) {
        reenable = true;
    } else if (platform::IsWindowInputEnabled(window)) {
        reenable = true;
        platform::EnableWindowInput(window, false);
    }
}

WindowDisabler::~WindowDisabler()
{
    if (window != nullptr && platform::IsLiveWindow(window) && reenable)
        platform::EnableWindowInput(window, true);
}
