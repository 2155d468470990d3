<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ar">
<context>
    <name>ApplicationEditor</name>
    <message>
        <source>Block application</source>
        <translation>حظر تطبيق</translation>
    </message>
    <message>
        <source>Search applications</source>
        <translation>البحث في التطبيقات</translation>
    </message>
    <message>
        <source>Finding applications…</source>
        <translation>جارٍ البحث عن التطبيقات…</translation>
    </message>
    <message>
        <source>Applications</source>
        <translation>التطبيقات</translation>
    </message>
</context>
<context>
    <name>ApplicationPolicyListSection</name>
    <message>
        <source>Blocked applications</source>
        <translation>التطبيقات المحظورة</translation>
    </message>
    <message>
        <source>No applications blocked</source>
        <translation>لا توجد تطبيقات محظورة</translation>
    </message>
</context>
<context>
    <name>BlockingView</name>
    <message>
        <source>Orvanta crown</source>
        <translation>تاج Orvanta</translation>
    </message>
    <message>
        <source>You own your time, your orvanta.</source>
        <translation>أنت تملك وقتك، أنت تملك أورفانتا الخاصة بك.</translation>
    </message>
    <message>
        <source>Persevere in the exact fulfillment of the duties of the moment.</source>
        <translation>ثابِر على الأداء الدقيق لواجبات اللحظة.</translation>
    </message>
    <message>
        <source>The Way, 825</source>
        <translation>الطريق، 825</translation>
    </message>
    <message>
        <source>I will focus now</source>
        <translation>سأركّز الآن</translation>
    </message>
</context>
<context>
    <name>DesktopReport</name>
    <message>
        <source>Orvanta Focus cannot see which application is in front. Install its GNOME extension, then log out and in.</source>
        <translation>لا يستطيع Orvanta Focus معرفة التطبيق الموجود في المقدمة. ثبّت إضافته الخاصة بـ GNOME، ثم سجّل الخروج وأعد الدخول.</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot see which application is in front: KWin takes no script from it. Start it from within Plasma, or log out and in.</source>
        <translation>لا يستطيع Orvanta Focus معرفة التطبيق الموجود في المقدمة: لا يقبل KWin نصه البرمجي. شغّله من داخل Plasma، أو سجّل الخروج وأعد الدخول.</translation>
    </message>
    <message>
        <source>Application blocking is not available here; website blocking works.</source>
        <translation>حظر التطبيقات غير متاح هنا؛ أما حظر المواقع فيعمل.</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot hide applications: sway does not take its commands. Start it from within sway.</source>
        <translation>لا يستطيع Orvanta Focus إخفاء التطبيقات: لا يقبل sway أوامره. شغّله من داخل sway.</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot cover applications. Install Qt&apos;s Wayland platform (qt6-wayland).</source>
        <translation>لا يستطيع Orvanta Focus تغطية التطبيقات. ثبّت منصة Wayland الخاصة بـ Qt ‏(qt6-wayland).</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot cover applications. Start it where XWayland runs.</source>
        <translation>لا يستطيع Orvanta Focus تغطية التطبيقات. شغّله حيث يعمل XWayland.</translation>
    </message>
    <message>
        <source>This desktop does not tell how long nothing was typed or moved; activity counts as going on.</source>
        <translation>لا يبيّن سطح المكتب هذا منذ متى لم يُكتب أو يُحرَّك شيء؛ لذا يُحتسب النشاط مستمرًا.</translation>
    </message>
</context>
<context>
    <name>DomainEditor</name>
    <message>
        <source>Block website</source>
        <translation>حظر موقع</translation>
    </message>
    <message>
        <source>Domain</source>
        <translation>النطاق</translation>
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
        <translation>المواقع المحظورة</translation>
    </message>
    <message>
        <source>No websites blocked</source>
        <translation>لا توجد مواقع محظورة</translation>
    </message>
</context>
<context>
    <name>FocusStatus</name>
    <message>
        <source>Focus active · macOS Focus + Orvanta task</source>
        <translation>التركيز نشط · تركيز macOS + مهمة Orvanta</translation>
    </message>
    <message>
        <source>Focus active · Orvanta task</source>
        <translation>التركيز نشط · مهمة Orvanta</translation>
    </message>
    <message>
        <source>Focus active · macOS Focus</source>
        <translation>التركيز نشط · تركيز macOS</translation>
    </message>
    <message>
        <source>Focus inactive</source>
        <translation>التركيز غير نشط</translation>
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
        <translation>الأذونات</translation>
    </message>
</context>
<context>
    <name>PolicyRow</name>
    <message>
        <source>Remove</source>
        <translation>إزالة</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>The website filter is not installed on this computer</source>
        <translation>مرشّح المواقع غير مثبَّت على هذا الحاسوب</translation>
    </message>
    <message>
        <source>The website filter gave an answer that cannot be read</source>
        <translation>أعطى مرشّح المواقع جوابًا لا يمكن قراءته</translation>
    </message>
    <message>
        <source>The website filter&apos;s preferences hold what this version does not know</source>
        <translation>تحتوي تفضيلات مرشّح المواقع على ما لا تعرفه هذه النسخة</translation>
    </message>
</context>
<context>
    <name>SectionHeader</name>
    <message>
        <source>Add to %1</source>
        <translation>إضافة إلى %1</translation>
    </message>
</context>
<context>
    <name>ServiceFailure</name>
    <message>
        <source>Orvanta request failed (HTTP %1)</source>
        <translation>فشل طلب Orvanta ‏(HTTP %1)</translation>
    </message>
    <message>
        <source>Orvanta API key is missing</source>
        <translation>مفتاح API الخاص بـ Orvanta مفقود</translation>
    </message>
    <message>
        <source>Orvanta returned an invalid response</source>
        <translation>أعادت Orvanta استجابة غير صالحة</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: it is not valid JSON</source>
        <translation>تعذّرت قراءة رد Orvanta: ليس JSON صالحًا</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: &quot;%1&quot; is missing</source>
        <translation>تعذّرت قراءة رد Orvanta: ‏«%1» مفقود</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: it is not a JSON object</source>
        <translation>تعذّرت قراءة رد Orvanta: ليس كائن JSON</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: &quot;%1&quot; has an unexpected value</source>
        <translation>تعذّرت قراءة رد Orvanta: قيمة «%1» غير متوقعة</translation>
    </message>
    <message>
        <source>The request could not be written: it holds a text that is not valid Unicode</source>
        <translation>تعذّرت كتابة الطلب: يحتوي على نص ليس Unicode صالحًا</translation>
    </message>
</context>
<context>
    <name>SheetButtons</name>
    <message>
        <source>Cancel</source>
        <translation>إلغاء</translation>
    </message>
</context>
<context>
    <name>StatusHints</name>
    <message>
        <source>This copy runs from a folder of its own. Install the program for the whole computer, with its filter, and start the installed one.</source>
        <translation>تعمل هذه النسخة من مجلد خاص بها. ثبّت البرنامج مع مرشّحه للحاسوب كله ثم شغّل النسخة المثبّتة.</translation>
    </message>
    <message>
        <source>Your desktop asks for an administrator&apos;s password. If it does not, no authentication agent runs in this session.</source>
        <translation>يطلب سطح المكتب كلمة مرور مسؤول النظام. إن لم يطلبها فلا يوجد وكيل مصادقة يعمل في هذه الجلسة.</translation>
    </message>
</context>
<context>
    <name>StoredFile</name>
    <message>
        <source>cannot be read (%1)</source>
        <translation>لا يمكن قراءته (%1)</translation>
    </message>
    <message>
        <source>is a folder</source>
        <translation>هو مجلد</translation>
    </message>
    <message>
        <source>is not a regular file</source>
        <translation>ليس ملفًا عاديًا</translation>
    </message>
    <message>
        <source>is larger than %1 MiB</source>
        <translation>أكبر من %1 ميبيبايت</translation>
    </message>
    <message>
        <source>another copy of the program is holding %1</source>
        <translation>نسخة أخرى من البرنامج تحتفظ بـ %1</translation>
    </message>
    <message>
        <source>it would be larger than %1 MiB</source>
        <translation>سيكون أكبر من %1 ميبيبايت</translation>
    </message>
    <message>
        <source>%1 %2, and it could not be moved aside: %3</source>
        <translation>%1 %2، ولم يمكن نقله جانبًا: %3</translation>
    </message>
    <message>
        <source>%1 %2; it was moved aside to %3</source>
        <translation>%1 %2؛ وقد نُقل جانبًا إلى %3</translation>
    </message>
    <message>
        <source>%1 could not be saved: %2</source>
        <translation>تعذّر حفظ %1: ‏%2</translation>
    </message>
    <message>
        <source>is empty</source>
        <translation>فارغ</translation>
    </message>
    <message>
        <source>is JSON that breaks off after %1 bytes</source>
        <translation>هو JSON ينقطع بعد %1 بايت</translation>
    </message>
    <message>
        <source>is not JSON (at byte %1 of %2)</source>
        <translation>ليس JSON (عند البايت %1 من %2)</translation>
    </message>
    <message>
        <source>is not one JSON object</source>
        <translation>ليس كائن JSON واحدًا</translation>
    </message>
    <message>
        <source>%1 could not be saved: it %2</source>
        <translation>تعذّر حفظ %1: ‏%2</translation>
    </message>
    <message>
        <source>%1 %2; it was changed just now, so nothing is saved in its place yet</source>
        <translation>‏%1 %2؛ جرى تغييره قبل لحظات، لذلك لم يُحفظ شيء مكانه بعد</translation>
    </message>
</context>
<context>
    <name>TransportError</name>
    <message>
        <source>The answer is too large</source>
        <translation>الرد كبير جدًا</translation>
    </message>
    <message>
        <source>The connection was lost</source>
        <translation>انقطع الاتصال</translation>
    </message>
    <message>
        <source>The request timed out</source>
        <translation>انتهت مهلة الطلب</translation>
    </message>
    <message>
        <source>Only https and http addresses can be reached</source>
        <translation>لا يمكن الوصول إلا إلى عناوين https و http</translation>
    </message>
    <message>
        <source>The service redirected too many times</source>
        <translation>أعادت الخدمة التوجيه مرات كثيرة جدًا</translation>
    </message>
    <message>
        <source>The request was cancelled</source>
        <translation>أُلغي الطلب</translation>
    </message>
    <message>
        <source>The service redirected to an address that is neither https nor http</source>
        <translation>أعادت الخدمة التوجيه إلى عنوان ليس https ولا http</translation>
    </message>
    <message>
        <source>The service redirected to an address that is not encrypted</source>
        <translation>أعادت الخدمة التوجيه إلى عنوان غير مشفّر</translation>
    </message>
</context>
<context>
    <name>WebsiteProtection</name>
    <message>
        <source>Activate website protection</source>
        <translation>تفعيل حماية المواقع</translation>
    </message>
    <message>
        <source>Website protection ready</source>
        <translation>حماية المواقع جاهزة</translation>
    </message>
    <message>
        <source>Blocking Active</source>
        <translation>الحظر نشط</translation>
    </message>
</context>
<context>
    <name>orvanta::AppModel</name>
    <message>
        <source>Setup required</source>
        <translation>الإعداد مطلوب</translation>
    </message>
    <message>
        <source>Orvanta API key required</source>
        <translation>مفتاح API الخاص بـ Orvanta مطلوب</translation>
    </message>
    <message>
        <source>Orvanta connected</source>
        <translation>متصل بخدمة Orvanta</translation>
    </message>
</context>
</TS>
