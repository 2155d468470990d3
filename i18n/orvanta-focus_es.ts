<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es">
<context>
    <name>ApplicationEditor</name>
    <message>
        <source>Block application</source>
        <translation>Bloquear aplicación</translation>
    </message>
    <message>
        <source>Search applications</source>
        <translation>Buscar aplicaciones</translation>
    </message>
    <message>
        <source>Finding applications…</source>
        <translation>Buscando aplicaciones…</translation>
    </message>
    <message>
        <source>Applications</source>
        <translation>Aplicaciones</translation>
    </message>
</context>
<context>
    <name>ApplicationPolicyListSection</name>
    <message>
        <source>Blocked applications</source>
        <translation>Aplicaciones bloqueadas</translation>
    </message>
    <message>
        <source>No applications blocked</source>
        <translation>No hay aplicaciones bloqueadas</translation>
    </message>
</context>
<context>
    <name>BlockingView</name>
    <message>
        <source>Orvanta crown</source>
        <translation>Corona de Orvanta</translation>
    </message>
    <message>
        <source>You own your time, your orvanta.</source>
        <translation>Eres dueño de tu tiempo, de tu orvanta.</translation>
    </message>
    <message>
        <source>Persevere in the exact fulfillment of the duties of the moment.</source>
        <translation>Persevera en el exacto cumplimiento de las obligaciones de ahora.</translation>
    </message>
    <message>
        <source>The Way, 825</source>
        <translation>Camino, 825</translation>
    </message>
    <message>
        <source>I will focus now</source>
        <translation>Voy a concentrarme ahora</translation>
    </message>
</context>
<context>
    <name>DesktopReport</name>
    <message>
        <source>Orvanta Focus cannot see which application is in front. Install its GNOME extension, then log out and in.</source>
        <translation>Orvanta Focus no puede ver qué aplicación está delante. Instala su extensión de GNOME; después, cierra la sesión y vuelve a entrar.</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot see which application is in front: KWin takes no script from it. Start it from within Plasma, or log out and in.</source>
        <translation>Orvanta Focus no puede ver qué aplicación está delante: KWin no acepta su script. Inícialo desde Plasma, o cierra la sesión y vuelve a entrar.</translation>
    </message>
    <message>
        <source>Application blocking is not available here; website blocking works.</source>
        <translation>Aquí no se pueden bloquear aplicaciones; los sitios web sí.</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot hide applications: sway does not take its commands. Start it from within sway.</source>
        <translation>Orvanta Focus no puede ocultar aplicaciones: sway no acepta sus órdenes. Inícialo desde sway.</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot cover applications. Install Qt&apos;s Wayland platform (qt6-wayland).</source>
        <translation>Orvanta Focus no puede cubrir aplicaciones. Instala la plataforma Wayland de Qt (qt6-wayland).</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot cover applications. Start it where XWayland runs.</source>
        <translation>Orvanta Focus no puede cubrir aplicaciones. Inícialo donde funcione XWayland.</translation>
    </message>
    <message>
        <source>This desktop does not tell how long nothing was typed or moved; activity counts as going on.</source>
        <translation>Este escritorio no indica cuánto tiempo hace que no se escribe ni se mueve nada; la actividad cuenta como continua.</translation>
    </message>
</context>
<context>
    <name>DomainEditor</name>
    <message>
        <source>Block website</source>
        <translation>Bloquear sitio web</translation>
    </message>
    <message>
        <source>Domain</source>
        <translation>Dominio</translation>
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
        <translation>Sitios web bloqueados</translation>
    </message>
    <message>
        <source>No websites blocked</source>
        <translation>No hay sitios web bloqueados</translation>
    </message>
</context>
<context>
    <name>FocusStatus</name>
    <message>
        <source>Focus active · macOS Focus + Orvanta task</source>
        <translation>Concentración activa · Concentración de macOS + tarea de Orvanta</translation>
    </message>
    <message>
        <source>Focus active · Orvanta task</source>
        <translation>Concentración activa · tarea de Orvanta</translation>
    </message>
    <message>
        <source>Focus active · macOS Focus</source>
        <translation>Concentración activa · Concentración de macOS</translation>
    </message>
    <message>
        <source>Focus inactive</source>
        <translation>Concentración inactiva</translation>
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
        <translation>Permisos</translation>
    </message>
</context>
<context>
    <name>PolicyRow</name>
    <message>
        <source>Remove</source>
        <translation>Quitar</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>The website filter is not installed on this computer</source>
        <translation>El filtro de sitios web no está instalado en este equipo</translation>
    </message>
    <message>
        <source>The website filter gave an answer that cannot be read</source>
        <translation>El filtro de sitios web dio una respuesta que no se puede leer</translation>
    </message>
    <message>
        <source>The website filter&apos;s preferences hold what this version does not know</source>
        <translation>Las preferencias del filtro de sitios web contienen algo que esta versión no conoce</translation>
    </message>
</context>
<context>
    <name>SectionHeader</name>
    <message>
        <source>Add to %1</source>
        <translation>Añadir a %1</translation>
    </message>
</context>
<context>
    <name>ServiceFailure</name>
    <message>
        <source>Orvanta request failed (HTTP %1)</source>
        <translation>La solicitud a Orvanta ha fallado (HTTP %1)</translation>
    </message>
    <message>
        <source>Orvanta API key is missing</source>
        <translation>Falta la clave de API de Orvanta</translation>
    </message>
    <message>
        <source>Orvanta returned an invalid response</source>
        <translation>Orvanta ha devuelto una respuesta no válida</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: it is not valid JSON</source>
        <translation>No se ha podido leer la respuesta de Orvanta: no es JSON válido</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: &quot;%1&quot; is missing</source>
        <translation>No se ha podido leer la respuesta de Orvanta: falta «%1»</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: it is not a JSON object</source>
        <translation>No se ha podido leer la respuesta de Orvanta: no es un objeto JSON</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: &quot;%1&quot; has an unexpected value</source>
        <translation>No se ha podido leer la respuesta de Orvanta: «%1» tiene un valor inesperado</translation>
    </message>
    <message>
        <source>The request could not be written: it holds a text that is not valid Unicode</source>
        <translation>No se ha podido escribir la solicitud: contiene un texto que no es Unicode válido</translation>
    </message>
</context>
<context>
    <name>SheetButtons</name>
    <message>
        <source>Cancel</source>
        <translation>Cancelar</translation>
    </message>
</context>
<context>
    <name>StatusHints</name>
    <message>
        <source>This copy runs from a folder of its own. Install the program for the whole computer, with its filter, and start the installed one.</source>
        <translation>Esta copia se ejecuta desde una carpeta propia. Instala el programa, con su filtro, para todo el equipo e inicia el instalado.</translation>
    </message>
    <message>
        <source>Your desktop asks for an administrator&apos;s password. If it does not, no authentication agent runs in this session.</source>
        <translation>El escritorio pide la contraseña de un administrador. Si no la pide, en esta sesión no hay ningún agente de autenticación.</translation>
    </message>
</context>
<context>
    <name>StoredFile</name>
    <message>
        <source>cannot be read (%1)</source>
        <translation>no se puede leer (%1)</translation>
    </message>
    <message>
        <source>is a folder</source>
        <translation>es una carpeta</translation>
    </message>
    <message>
        <source>is not a regular file</source>
        <translation>no es un archivo normal</translation>
    </message>
    <message>
        <source>is larger than %1 MiB</source>
        <translation>ocupa más de %1 MiB</translation>
    </message>
    <message>
        <source>another copy of the program is holding %1</source>
        <translation>otra copia del programa tiene ocupado %1</translation>
    </message>
    <message>
        <source>it would be larger than %1 MiB</source>
        <translation>ocuparía más de %1 MiB</translation>
    </message>
    <message>
        <source>%1 %2, and it could not be moved aside: %3</source>
        <translation>%1 %2, y no se ha podido apartar: %3</translation>
    </message>
    <message>
        <source>%1 %2; it was moved aside to %3</source>
        <translation>%1 %2; se ha apartado como %3</translation>
    </message>
    <message>
        <source>%1 could not be saved: %2</source>
        <translation>No se ha podido guardar %1: %2</translation>
    </message>
    <message>
        <source>is empty</source>
        <translation>está vacío</translation>
    </message>
    <message>
        <source>is JSON that breaks off after %1 bytes</source>
        <translation>es JSON que se interrumpe tras %1 bytes</translation>
    </message>
    <message>
        <source>is not JSON (at byte %1 of %2)</source>
        <translation>no es JSON (en el byte %1 de %2)</translation>
    </message>
    <message>
        <source>is not one JSON object</source>
        <translation>no es un único objeto JSON</translation>
    </message>
    <message>
        <source>%1 could not be saved: it %2</source>
        <translation>No se ha podido guardar %1: %2</translation>
    </message>
    <message>
        <source>%1 %2; it was changed just now, so nothing is saved in its place yet</source>
        <translation>%1 %2; acaba de modificarse, así que todavía no se guarda nada en su lugar</translation>
    </message>
</context>
<context>
    <name>TransportError</name>
    <message>
        <source>The answer is too large</source>
        <translation>La respuesta es demasiado grande</translation>
    </message>
    <message>
        <source>The connection was lost</source>
        <translation>Se ha perdido la conexión</translation>
    </message>
    <message>
        <source>The request timed out</source>
        <translation>La solicitud ha tardado demasiado</translation>
    </message>
    <message>
        <source>Only https and http addresses can be reached</source>
        <translation>Solo se puede acceder a direcciones https y http</translation>
    </message>
    <message>
        <source>The service redirected too many times</source>
        <translation>El servicio ha redirigido demasiadas veces</translation>
    </message>
    <message>
        <source>The request was cancelled</source>
        <translation>La solicitud se ha cancelado</translation>
    </message>
    <message>
        <source>The service redirected to an address that is neither https nor http</source>
        <translation>El servicio ha redirigido a una dirección que no es ni https ni http</translation>
    </message>
    <message>
        <source>The service redirected to an address that is not encrypted</source>
        <translation>El servicio ha redirigido a una dirección sin cifrar</translation>
    </message>
</context>
<context>
    <name>WebsiteProtection</name>
    <message>
        <source>Activate website protection</source>
        <translation>Activar la protección web</translation>
    </message>
    <message>
        <source>Website protection ready</source>
        <translation>Protección web lista</translation>
    </message>
    <message>
        <source>Blocking Active</source>
        <translation>Bloqueo activo</translation>
    </message>
</context>
<context>
    <name>orvanta::AppModel</name>
    <message>
        <source>Setup required</source>
        <translation>Se requiere configuración</translation>
    </message>
    <message>
        <source>Orvanta API key required</source>
        <translation>Se requiere la clave de API de Orvanta</translation>
    </message>
    <message>
        <source>Orvanta connected</source>
        <translation>Orvanta conectado</translation>
    </message>
</context>
</TS>
