#include "Unit/Text/Html.h"

#include <fmt/format.h>

#include <string_view>

namespace
{
constexpr const char* HEAD = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{}</title>
<style>
:root {{ color-scheme: light dark; --text: #1a1a1a; --soft: #555; --page: #fff; --line: #ccc; --code: #f3f3f3; }}
@media (prefers-color-scheme: dark) {{
  :root {{ --text: #e8e8e8; --soft: #aaa; --page: #161616; --line: #444; --code: #242424; }}
}}
body {{ margin: 0 auto; padding: 1rem; max-width: 62rem; font: 1rem/1.5 system-ui, sans-serif; color: var(--text);
       background: var(--page); }}
h1 {{ font-size: 1.5rem; margin: 0 0 .25rem; }}
h2 {{ font-size: 1.15rem; margin: 2rem 0 .5rem; }}
.soft {{ color: var(--soft); }}
.wide {{ overflow-x: auto; }}
figure {{ margin: 1rem 0; background: #fff; border-radius: .4rem; }}
figure svg {{ display: block; width: 100%; min-width: 38rem; height: auto; }}
table {{ border-collapse: collapse; width: 100%; }}
th, td {{ text-align: left; padding: .2rem .7rem .2rem 0; border-bottom: 1px solid var(--line); vertical-align: top; }}
th.group {{ padding-top: .9rem; }}
.value {{ text-align: right; white-space: nowrap; font-variant-numeric: tabular-nums; }}
pre {{ background: var(--code); padding: .7rem; overflow-x: auto; border-radius: .4rem; font-size: .85rem; }}
pre.command {{ margin: -.5rem 0 1rem; user-select: all; }}
.missed {{ font-weight: bold; }}
</style>
</head>
<body>
)";
} // namespace

std::string escapedHtml(const std::string& sText)
{
    std::string sEscaped;
    for (const char c : sText) {
        switch (c) {
        case '&':
            sEscaped += "&amp;";
            break;
        case '<':
            sEscaped += "&lt;";
            break;
        case '>':
            sEscaped += "&gt;";
            break;
        case '"':
            sEscaped += "&quot;";
            break;
        default:
            sEscaped += c;
        }
    }
    return sEscaped;
}

std::string htmlHead(const std::string& sTitle)
{
    return fmt::format(fmt::runtime(HEAD), escapedHtml(sTitle));
}

std::string svgElement(const std::string& sPicture)
{
    constexpr std::string_view TITLE = "<title>Gnuplot</title>";
    const std::size_t nBegin = sPicture.find("<svg");
    std::string sElement = nBegin == std::string::npos ? std::string() : sPicture.substr(nBegin);
    const std::size_t nTitle = sElement.find(TITLE);
    return nTitle == std::string::npos ? sElement : sElement.erase(nTitle, TITLE.size());
}
