<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
<context>
    <name>ApplicationEditor</name>
    <message>
        <source>Block application</source>
        <translation>屏蔽应用</translation>
    </message>
    <message>
        <source>Search applications</source>
        <translation>搜索应用</translation>
    </message>
    <message>
        <source>Finding applications…</source>
        <translation>正在查找应用…</translation>
    </message>
    <message>
        <source>Applications</source>
        <translation>应用</translation>
    </message>
</context>
<context>
    <name>ApplicationPolicyListSection</name>
    <message>
        <source>Blocked applications</source>
        <translation>已屏蔽的应用</translation>
    </message>
    <message>
        <source>No applications blocked</source>
        <translation>没有屏蔽任何应用</translation>
    </message>
</context>
<context>
    <name>BlockingView</name>
    <message>
        <source>Orvanta crown</source>
        <translation>Orvanta 王冠</translation>
    </message>
    <message>
        <source>You own your time, your orvanta.</source>
        <translation>你的时间，你的 orvanta，由你掌握。</translation>
    </message>
    <message>
        <source>Persevere in the exact fulfillment of the duties of the moment.</source>
        <translation>坚持不懈，一丝不苟地履行当下的职责。</translation>
    </message>
    <message>
        <source>The Way, 825</source>
        <translation>《道路》，825</translation>
    </message>
    <message>
        <source>I will focus now</source>
        <translation>我现在就专注</translation>
    </message>
</context>
<context>
    <name>DesktopReport</name>
    <message>
        <source>Orvanta Focus cannot see which application is in front. Install its GNOME extension, then log out and in.</source>
        <translation>Orvanta Focus 无法得知哪个应用在最前面。请安装它的 GNOME 扩展，然后注销并重新登录。</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot see which application is in front: KWin takes no script from it. Start it from within Plasma, or log out and in.</source>
        <translation>Orvanta Focus 无法得知哪个应用在最前面：KWin 不接受它的脚本。请在 Plasma 中启动它，或注销并重新登录。</translation>
    </message>
    <message>
        <source>Application blocking is not available here; website blocking works.</source>
        <translation>此处无法屏蔽应用；网站屏蔽可以使用。</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot hide applications: sway does not take its commands. Start it from within sway.</source>
        <translation>Orvanta Focus 无法隐藏应用：sway 不接受它的命令。请在 sway 中启动它。</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot cover applications. Install Qt&apos;s Wayland platform (qt6-wayland).</source>
        <translation>Orvanta Focus 无法遮盖应用。请安装 Qt 的 Wayland 平台 (qt6-wayland)。</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot cover applications. Start it where XWayland runs.</source>
        <translation>Orvanta Focus 无法遮盖应用。请在运行 XWayland 的环境中启动它。</translation>
    </message>
    <message>
        <source>This desktop does not tell how long nothing was typed or moved; activity counts as going on.</source>
        <translation>此桌面不提供多久没有键入或移动的信息；将视为一直在活动。</translation>
    </message>
</context>
<context>
    <name>DomainEditor</name>
    <message>
        <source>Block website</source>
        <translation>屏蔽网站</translation>
    </message>
    <message>
        <source>Domain</source>
        <translation>域名</translation>
    </message>
</context>
<context>
    <name>FocusSettingsView</name>
    <message>
        <source>Orvanta Focus</source>
        <translation>Orvanta Focus</translation>
    </message>
    <message>
        <source>Blocked websites</source>
        <translation>已屏蔽的网站</translation>
    </message>
    <message>
        <source>No websites blocked</source>
        <translation>没有屏蔽任何网站</translation>
    </message>
</context>
<context>
    <name>FocusStatus</name>
    <message>
        <source>Focus active · macOS Focus + Orvanta task</source>
        <translation>专注已开启 · macOS 专注模式 + Orvanta 任务</translation>
    </message>
    <message>
        <source>Focus active · Orvanta task</source>
        <translation>专注已开启 · Orvanta 任务</translation>
    </message>
    <message>
        <source>Focus active · macOS Focus</source>
        <translation>专注已开启 · macOS 专注模式</translation>
    </message>
    <message>
        <source>Focus inactive</source>
        <translation>专注未开启</translation>
    </message>
</context>
<context>
    <name>Main</name>
    <message>
        <source>Orvanta Focus</source>
        <translation>Orvanta Focus</translation>
    </message>
</context>
<context>
    <name>PermissionsSection</name>
    <message>
        <source>Permissions</source>
        <translation>权限</translation>
    </message>
</context>
<context>
    <name>PolicyRow</name>
    <message>
        <source>Remove</source>
        <translation>移除</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>The website filter is not installed on this computer</source>
        <translation>这台电脑上没有安装网站过滤器</translation>
    </message>
    <message>
        <source>The website filter gave an answer that cannot be read</source>
        <translation>网站过滤器给出了无法读取的答复</translation>
    </message>
    <message>
        <source>The website filter&apos;s preferences hold what this version does not know</source>
        <translation>网站过滤器的首选项中有此版本不认识的内容</translation>
    </message>
</context>
<context>
    <name>SectionHeader</name>
    <message>
        <source>Add to %1</source>
        <translation>添加到%1</translation>
    </message>
</context>
<context>
    <name>ServiceFailure</name>
    <message>
        <source>Orvanta request failed (HTTP %1)</source>
        <translation>Orvanta 请求失败（HTTP %1）</translation>
    </message>
    <message>
        <source>Orvanta API key is missing</source>
        <translation>缺少 Orvanta API 密钥</translation>
    </message>
    <message>
        <source>Orvanta returned an invalid response</source>
        <translation>Orvanta 返回了无效的响应</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: it is not valid JSON</source>
        <translation>无法读取 Orvanta 的回复：不是有效的 JSON</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: &quot;%1&quot; is missing</source>
        <translation>无法读取 Orvanta 的回复：缺少“%1”</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: it is not a JSON object</source>
        <translation>无法读取 Orvanta 的回复：不是 JSON 对象</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: &quot;%1&quot; has an unexpected value</source>
        <translation>无法读取 Orvanta 的回复：“%1”的值不符合预期</translation>
    </message>
    <message>
        <source>The request could not be written: it holds a text that is not valid Unicode</source>
        <translation>无法写入请求：其中含有不是有效 Unicode 的文本</translation>
    </message>
</context>
<context>
    <name>SheetButtons</name>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
</context>
<context>
    <name>StatusHints</name>
    <message>
        <source>This copy runs from a folder of its own. Install the program for the whole computer, with its filter, and start the installed one.</source>
        <translation>此副本从单独的文件夹运行。请为整台计算机安装本程序及其过滤器，然后启动已安装的程序。</translation>
    </message>
    <message>
        <source>Your desktop asks for an administrator&apos;s password. If it does not, no authentication agent runs in this session.</source>
        <translation>桌面会要求输入管理员密码。如果没有出现提示，说明此会话中没有运行身份验证代理。</translation>
    </message>
</context>
<context>
    <name>StoredFile</name>
    <message>
        <source>cannot be read (%1)</source>
        <translation>无法读取（%1）</translation>
    </message>
    <message>
        <source>is a folder</source>
        <translation>是一个文件夹</translation>
    </message>
    <message>
        <source>is not a regular file</source>
        <translation>不是普通文件</translation>
    </message>
    <message>
        <source>is larger than %1 MiB</source>
        <translation>大于 %1 MiB</translation>
    </message>
    <message>
        <source>another copy of the program is holding %1</source>
        <translation>程序的另一个副本正占用 %1</translation>
    </message>
    <message>
        <source>it would be larger than %1 MiB</source>
        <translation>它将大于 %1 MiB</translation>
    </message>
    <message>
        <source>%1 %2, and it could not be moved aside: %3</source>
        <translation>%1 %2，并且无法将其移开：%3</translation>
    </message>
    <message>
        <source>%1 %2; it was moved aside to %3</source>
        <translation>%1 %2；已将其移至 %3</translation>
    </message>
    <message>
        <source>%1 could not be saved: %2</source>
        <translation>无法保存 %1：%2</translation>
    </message>
    <message>
        <source>is empty</source>
        <translation>是空的</translation>
    </message>
    <message>
        <source>is JSON that breaks off after %1 bytes</source>
        <translation>是在 %1 字节后中断的 JSON</translation>
    </message>
    <message>
        <source>is not JSON (at byte %1 of %2)</source>
        <translation>不是 JSON（第 %1 字节，共 %2 字节）</translation>
    </message>
    <message>
        <source>is not one JSON object</source>
        <translation>不是单个 JSON 对象</translation>
    </message>
    <message>
        <source>%1 could not be saved: it %2</source>
        <translation>无法保存 %1：它%2</translation>
    </message>
    <message>
        <source>%1 %2; it was changed just now, so nothing is saved in its place yet</source>
        <translation>%1 %2；它刚刚被更改，因此暂不在其位置保存任何内容</translation>
    </message>
</context>
<context>
    <name>TransportError</name>
    <message>
        <source>The answer is too large</source>
        <translation>回复过大</translation>
    </message>
    <message>
        <source>The connection was lost</source>
        <translation>连接已断开</translation>
    </message>
    <message>
        <source>The request timed out</source>
        <translation>请求超时</translation>
    </message>
    <message>
        <source>Only https and http addresses can be reached</source>
        <translation>只能访问 https 和 http 地址</translation>
    </message>
    <message>
        <source>The service redirected too many times</source>
        <translation>服务重定向次数过多</translation>
    </message>
    <message>
        <source>The request was cancelled</source>
        <translation>请求已取消</translation>
    </message>
    <message>
        <source>The service redirected to an address that is neither https nor http</source>
        <translation>服务重定向到了既不是 https 也不是 http 的地址</translation>
    </message>
    <message>
        <source>The service redirected to an address that is not encrypted</source>
        <translation>服务重定向到了未加密的地址</translation>
    </message>
</context>
<context>
    <name>WebsiteProtection</name>
    <message>
        <source>Activate website protection</source>
        <translation>启用网站保护</translation>
    </message>
    <message>
        <source>Website protection ready</source>
        <translation>网站保护已就绪</translation>
    </message>
    <message>
        <source>Blocking Active</source>
        <translation>正在屏蔽</translation>
    </message>
</context>
<context>
    <name>orvanta::AppModel</name>
    <message>
        <source>Setup required</source>
        <translation>需要设置</translation>
    </message>
    <message>
        <source>Orvanta API key required</source>
        <translation>需要 Orvanta API 密钥</translation>
    </message>
    <message>
        <source>Orvanta connected</source>
        <translation>Orvanta 已连接</translation>
    </message>
</context>
</TS>
