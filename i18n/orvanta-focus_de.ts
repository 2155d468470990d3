<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name>ApplicationEditor</name>
    <message>
        <source>Block application</source>
        <translation>App blockieren</translation>
    </message>
    <message>
        <source>Search applications</source>
        <translation>Apps suchen</translation>
    </message>
    <message>
        <source>Finding applications…</source>
        <translation>Apps werden gesucht …</translation>
    </message>
    <message>
        <source>Applications</source>
        <translation>Apps</translation>
    </message>
</context>
<context>
    <name>ApplicationPolicyListSection</name>
    <message>
        <source>Blocked applications</source>
        <translation>Blockierte Apps</translation>
    </message>
    <message>
        <source>No applications blocked</source>
        <translation>Keine Apps blockiert</translation>
    </message>
</context>
<context>
    <name>BlockingView</name>
    <message>
        <source>Orvanta crown</source>
        <translation>Orvanta-Krone</translation>
    </message>
    <message>
        <source>You own your time, your orvanta.</source>
        <translation>Deine Zeit gehört dir, dein Orvanta.</translation>
    </message>
    <message>
        <source>Persevere in the exact fulfillment of the duties of the moment.</source>
        <translation>Harre aus in der genauen Erfüllung der Pflichten des Augenblicks.</translation>
    </message>
    <message>
        <source>The Way, 825</source>
        <translation>Der Weg, 825</translation>
    </message>
    <message>
        <source>I will focus now</source>
        <translation>Ich konzentriere mich jetzt</translation>
    </message>
</context>
<context>
    <name>DesktopReport</name>
    <message>
        <source>Orvanta Focus cannot see which application is in front. Install its GNOME extension, then log out and in.</source>
        <translation>Orvanta Focus kann nicht sehen, welche App im Vordergrund ist. Installieren Sie die GNOME-Erweiterung und melden Sie sich dann ab und wieder an.</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot see which application is in front: KWin takes no script from it. Start it from within Plasma, or log out and in.</source>
        <translation>Orvanta Focus kann nicht sehen, welche App im Vordergrund ist: KWin nimmt kein Skript von ihm an. Starten Sie es aus Plasma heraus oder melden Sie sich ab und wieder an.</translation>
    </message>
    <message>
        <source>Application blocking is not available here; website blocking works.</source>
        <translation>Apps können hier nicht blockiert werden; Websites schon.</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot hide applications: sway does not take its commands. Start it from within sway.</source>
        <translation>Orvanta Focus kann keine Apps ausblenden: sway nimmt seine Befehle nicht an. Starten Sie es aus sway heraus.</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot cover applications. Install Qt&apos;s Wayland platform (qt6-wayland).</source>
        <translation>Orvanta Focus kann keine Apps verdecken. Installieren Sie die Wayland-Plattform von Qt (qt6-wayland).</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot cover applications. Start it where XWayland runs.</source>
        <translation>Orvanta Focus kann keine Apps verdecken. Starten Sie es dort, wo XWayland läuft.</translation>
    </message>
    <message>
        <source>This desktop does not tell how long nothing was typed or moved; activity counts as going on.</source>
        <translation>Dieser Desktop verrät nicht, wie lange nichts getippt oder bewegt wurde; Aktivität gilt als fortdauernd.</translation>
    </message>
</context>
<context>
    <name>DomainEditor</name>
    <message>
        <source>Block website</source>
        <translation>Website blockieren</translation>
    </message>
    <message>
        <source>Domain</source>
        <translation>Domain</translation>
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
        <translation>Blockierte Websites</translation>
    </message>
    <message>
        <source>No websites blocked</source>
        <translation>Keine Websites blockiert</translation>
    </message>
</context>
<context>
    <name>FocusStatus</name>
    <message>
        <source>Focus active · macOS Focus + Orvanta task</source>
        <translation>Fokus aktiv · macOS-Fokus + Orvanta-Aufgabe</translation>
    </message>
    <message>
        <source>Focus active · Orvanta task</source>
        <translation>Fokus aktiv · Orvanta-Aufgabe</translation>
    </message>
    <message>
        <source>Focus active · macOS Focus</source>
        <translation>Fokus aktiv · macOS-Fokus</translation>
    </message>
    <message>
        <source>Focus inactive</source>
        <translation>Fokus inaktiv</translation>
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
        <translation>Berechtigungen</translation>
    </message>
</context>
<context>
    <name>PolicyRow</name>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>The website filter is not installed on this computer</source>
        <translation>Der Website-Filter ist auf diesem Rechner nicht installiert</translation>
    </message>
    <message>
        <source>The website filter gave an answer that cannot be read</source>
        <translation>Der Website-Filter hat eine Antwort gegeben, die nicht lesbar ist</translation>
    </message>
    <message>
        <source>The website filter&apos;s preferences hold what this version does not know</source>
        <translation>Die Einstellungen des Website-Filters enthalten etwas, das diese Version nicht kennt</translation>
    </message>
</context>
<context>
    <name>SectionHeader</name>
    <message>
        <source>Add to %1</source>
        <translation>Hinzufügen zu: %1</translation>
    </message>
</context>
<context>
    <name>ServiceFailure</name>
    <message>
        <source>Orvanta request failed (HTTP %1)</source>
        <translation>Orvanta-Anfrage fehlgeschlagen (HTTP %1)</translation>
    </message>
    <message>
        <source>Orvanta API key is missing</source>
        <translation>Der Orvanta-API-Schlüssel fehlt</translation>
    </message>
    <message>
        <source>Orvanta returned an invalid response</source>
        <translation>Orvanta hat eine ungültige Antwort geliefert</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: it is not valid JSON</source>
        <translation>Die Antwort von Orvanta ist nicht lesbar: Sie ist kein gültiges JSON</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: &quot;%1&quot; is missing</source>
        <translation>Die Antwort von Orvanta ist nicht lesbar: „%1“ fehlt</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: it is not a JSON object</source>
        <translation>Die Antwort von Orvanta ist nicht lesbar: Sie ist kein JSON-Objekt</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: &quot;%1&quot; has an unexpected value</source>
        <translation>Die Antwort von Orvanta ist nicht lesbar: „%1“ hat einen unerwarteten Wert</translation>
    </message>
    <message>
        <source>The request could not be written: it holds a text that is not valid Unicode</source>
        <translation>Die Anfrage konnte nicht geschrieben werden: Sie enthält einen Text, der kein gültiges Unicode ist</translation>
    </message>
</context>
<context>
    <name>SheetButtons</name>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>StatusHints</name>
    <message>
        <source>This copy runs from a folder of its own. Install the program for the whole computer, with its filter, and start the installed one.</source>
        <translation>Diese Kopie läuft aus einem eigenen Ordner. Installieren Sie das Programm mitsamt seinem Filter für den ganzen Computer und starten Sie das installierte.</translation>
    </message>
    <message>
        <source>Your desktop asks for an administrator&apos;s password. If it does not, no authentication agent runs in this session.</source>
        <translation>Ihr Desktop fragt nach dem Passwort eines Administrators. Fragt er nicht, läuft in dieser Sitzung kein Authentifizierungsdienst.</translation>
    </message>
</context>
<context>
    <name>StoredFile</name>
    <message>
        <source>cannot be read (%1)</source>
        <translation>kann nicht gelesen werden (%1)</translation>
    </message>
    <message>
        <source>is a folder</source>
        <translation>ist ein Ordner</translation>
    </message>
    <message>
        <source>is not a regular file</source>
        <translation>ist keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>is larger than %1 MiB</source>
        <translation>ist größer als %1 MiB</translation>
    </message>
    <message>
        <source>another copy of the program is holding %1</source>
        <translation>eine andere Kopie des Programms hält %1 fest</translation>
    </message>
    <message>
        <source>it would be larger than %1 MiB</source>
        <translation>sie wäre größer als %1 MiB</translation>
    </message>
    <message>
        <source>%1 %2, and it could not be moved aside: %3</source>
        <translation>%1 %2 und konnte nicht beiseitegelegt werden: %3</translation>
    </message>
    <message>
        <source>%1 %2; it was moved aside to %3</source>
        <translation>%1 %2 und wurde als %3 beiseitegelegt</translation>
    </message>
    <message>
        <source>%1 could not be saved: %2</source>
        <translation>%1 konnte nicht gespeichert werden: %2</translation>
    </message>
    <message>
        <source>is empty</source>
        <translation>ist leer</translation>
    </message>
    <message>
        <source>is JSON that breaks off after %1 bytes</source>
        <translation>ist JSON, das nach %1 Bytes abbricht</translation>
    </message>
    <message>
        <source>is not JSON (at byte %1 of %2)</source>
        <translation>ist kein JSON (bei Byte %1 von %2)</translation>
    </message>
    <message>
        <source>is not one JSON object</source>
        <translation>ist kein einzelnes JSON-Objekt</translation>
    </message>
    <message>
        <source>%1 could not be saved: it %2</source>
        <translation>%1 konnte nicht gespeichert werden: sie %2</translation>
    </message>
    <message>
        <source>%1 %2; it was changed just now, so nothing is saved in its place yet</source>
        <translation>%1 %2; sie wurde gerade erst geändert, daher wird noch nichts an ihrer Stelle gespeichert</translation>
    </message>
</context>
<context>
    <name>TransportError</name>
    <message>
        <source>The answer is too large</source>
        <translation>Die Antwort ist zu groß</translation>
    </message>
    <message>
        <source>The connection was lost</source>
        <translation>Die Verbindung ging verloren</translation>
    </message>
    <message>
        <source>The request timed out</source>
        <translation>Die Anfrage hat zu lange gedauert</translation>
    </message>
    <message>
        <source>Only https and http addresses can be reached</source>
        <translation>Nur https- und http-Adressen sind erreichbar</translation>
    </message>
    <message>
        <source>The service redirected too many times</source>
        <translation>Der Dienst hat zu oft umgeleitet</translation>
    </message>
    <message>
        <source>The request was cancelled</source>
        <translation>Die Anfrage wurde abgebrochen</translation>
    </message>
    <message>
        <source>The service redirected to an address that is neither https nor http</source>
        <translation>Der Dienst hat auf eine Adresse umgeleitet, die weder https noch http ist</translation>
    </message>
    <message>
        <source>The service redirected to an address that is not encrypted</source>
        <translation>Der Dienst hat auf eine unverschlüsselte Adresse umgeleitet</translation>
    </message>
</context>
<context>
    <name>WebsiteProtection</name>
    <message>
        <source>Activate website protection</source>
        <translation>Website-Schutz aktivieren</translation>
    </message>
    <message>
        <source>Website protection ready</source>
        <translation>Website-Schutz bereit</translation>
    </message>
    <message>
        <source>Blocking Active</source>
        <translation>Blockierung aktiv</translation>
    </message>
</context>
<context>
    <name>orvanta::AppModel</name>
    <message>
        <source>Setup required</source>
        <translation>Einrichtung erforderlich</translation>
    </message>
    <message>
        <source>Orvanta API key required</source>
        <translation>Orvanta-API-Schlüssel erforderlich</translation>
    </message>
    <message>
        <source>Orvanta connected</source>
        <translation>Mit Orvanta verbunden</translation>
    </message>
</context>
</TS>
