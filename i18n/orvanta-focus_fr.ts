<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr">
<context>
    <name>ApplicationEditor</name>
    <message>
        <source>Block application</source>
        <translation>Bloquer une application</translation>
    </message>
    <message>
        <source>Search applications</source>
        <translation>Rechercher des applications</translation>
    </message>
    <message>
        <source>Finding applications…</source>
        <translation>Recherche des applications…</translation>
    </message>
    <message>
        <source>Applications</source>
        <translation>Applications</translation>
    </message>
</context>
<context>
    <name>ApplicationPolicyListSection</name>
    <message>
        <source>Blocked applications</source>
        <translation>Applications bloquées</translation>
    </message>
    <message>
        <source>No applications blocked</source>
        <translation>Aucune application bloquée</translation>
    </message>
</context>
<context>
    <name>BlockingView</name>
    <message>
        <source>Orvanta crown</source>
        <translation>Couronne Orvanta</translation>
    </message>
    <message>
        <source>You own your time, your orvanta.</source>
        <translation>Ton temps t’appartient, ton orvanta aussi.</translation>
    </message>
    <message>
        <source>Persevere in the exact fulfillment of the duties of the moment.</source>
        <translation>Persévère dans l’accomplissement exact des devoirs du moment.</translation>
    </message>
    <message>
        <source>The Way, 825</source>
        <translation>Chemin, 825</translation>
    </message>
    <message>
        <source>I will focus now</source>
        <translation>Je me concentre maintenant</translation>
    </message>
</context>
<context>
    <name>DesktopReport</name>
    <message>
        <source>Orvanta Focus cannot see which application is in front. Install its GNOME extension, then log out and in.</source>
        <translation>Orvanta Focus ne peut pas voir quelle application est au premier plan. Installez son extension GNOME, puis fermez la session et rouvrez-la.</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot see which application is in front: KWin takes no script from it. Start it from within Plasma, or log out and in.</source>
        <translation>Orvanta Focus ne peut pas voir quelle application est au premier plan : KWin n’accepte pas son script. Lancez-le depuis Plasma, ou fermez la session et rouvrez-la.</translation>
    </message>
    <message>
        <source>Application blocking is not available here; website blocking works.</source>
        <translation>Le blocage des applications n’est pas disponible ici ; celui des sites web fonctionne.</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot hide applications: sway does not take its commands. Start it from within sway.</source>
        <translation>Orvanta Focus ne peut pas masquer les applications : sway n’accepte pas ses commandes. Lancez-le depuis sway.</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot cover applications. Install Qt&apos;s Wayland platform (qt6-wayland).</source>
        <translation>Orvanta Focus ne peut pas couvrir les applications. Installez la plateforme Wayland de Qt (qt6-wayland).</translation>
    </message>
    <message>
        <source>Orvanta Focus cannot cover applications. Start it where XWayland runs.</source>
        <translation>Orvanta Focus ne peut pas couvrir les applications. Lancez-le là où XWayland fonctionne.</translation>
    </message>
    <message>
        <source>This desktop does not tell how long nothing was typed or moved; activity counts as going on.</source>
        <translation>Ce bureau n’indique pas depuis combien de temps rien n’a été saisi ni déplacé ; l’activité est considérée comme continue.</translation>
    </message>
</context>
<context>
    <name>DomainEditor</name>
    <message>
        <source>Block website</source>
        <translation>Bloquer un site web</translation>
    </message>
    <message>
        <source>Domain</source>
        <translation>Domaine</translation>
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
        <translation>Sites web bloqués</translation>
    </message>
    <message>
        <source>No websites blocked</source>
        <translation>Aucun site web bloqué</translation>
    </message>
</context>
<context>
    <name>FocusStatus</name>
    <message>
        <source>Focus active · macOS Focus + Orvanta task</source>
        <translation>Concentration active · Concentration macOS + tâche Orvanta</translation>
    </message>
    <message>
        <source>Focus active · Orvanta task</source>
        <translation>Concentration active · tâche Orvanta</translation>
    </message>
    <message>
        <source>Focus active · macOS Focus</source>
        <translation>Concentration active · Concentration macOS</translation>
    </message>
    <message>
        <source>Focus inactive</source>
        <translation>Concentration inactive</translation>
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
        <translation>Autorisations</translation>
    </message>
</context>
<context>
    <name>PolicyRow</name>
    <message>
        <source>Remove</source>
        <translation>Retirer</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>The website filter is not installed on this computer</source>
        <translation>Le filtre de sites web n’est pas installé sur cet ordinateur</translation>
    </message>
    <message>
        <source>The website filter gave an answer that cannot be read</source>
        <translation>Le filtre de sites web a donné une réponse illisible</translation>
    </message>
    <message>
        <source>The website filter&apos;s preferences hold what this version does not know</source>
        <translation>Les préférences du filtre de sites web contiennent quelque chose que cette version ne connaît pas</translation>
    </message>
</context>
<context>
    <name>SectionHeader</name>
    <message>
        <source>Add to %1</source>
        <translation>Ajouter à : %1</translation>
    </message>
</context>
<context>
    <name>ServiceFailure</name>
    <message>
        <source>Orvanta request failed (HTTP %1)</source>
        <translation>La requête à Orvanta a échoué (HTTP %1)</translation>
    </message>
    <message>
        <source>Orvanta API key is missing</source>
        <translation>La clé d’API Orvanta est manquante</translation>
    </message>
    <message>
        <source>Orvanta returned an invalid response</source>
        <translation>Orvanta a renvoyé une réponse non valide</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: it is not valid JSON</source>
        <translation>La réponse d’Orvanta est illisible : ce n’est pas du JSON valide</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: &quot;%1&quot; is missing</source>
        <translation>La réponse d’Orvanta est illisible : « %1 » manque</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: it is not a JSON object</source>
        <translation>La réponse d’Orvanta est illisible : ce n’est pas un objet JSON</translation>
    </message>
    <message>
        <source>Orvanta&apos;s answer could not be read: &quot;%1&quot; has an unexpected value</source>
        <translation>La réponse d’Orvanta est illisible : « %1 » a une valeur inattendue</translation>
    </message>
    <message>
        <source>The request could not be written: it holds a text that is not valid Unicode</source>
        <translation>La requête n’a pas pu être écrite : elle contient un texte qui n’est pas de l’Unicode valide</translation>
    </message>
</context>
<context>
    <name>SheetButtons</name>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
</context>
<context>
    <name>StatusHints</name>
    <message>
        <source>This copy runs from a folder of its own. Install the program for the whole computer, with its filter, and start the installed one.</source>
        <translation>Cette copie s’exécute depuis un dossier à part. Installez le programme, avec son filtre, pour tout l’ordinateur, puis lancez celui qui est installé.</translation>
    </message>
    <message>
        <source>Your desktop asks for an administrator&apos;s password. If it does not, no authentication agent runs in this session.</source>
        <translation>Votre bureau demande le mot de passe d’un administrateur. S’il ne le fait pas, aucun agent d’authentification ne tourne dans cette session.</translation>
    </message>
</context>
<context>
    <name>StoredFile</name>
    <message>
        <source>cannot be read (%1)</source>
        <translation>ne peut pas être lu (%1)</translation>
    </message>
    <message>
        <source>is a folder</source>
        <translation>est un dossier</translation>
    </message>
    <message>
        <source>is not a regular file</source>
        <translation>n’est pas un fichier ordinaire</translation>
    </message>
    <message>
        <source>is larger than %1 MiB</source>
        <translation>dépasse %1 Mio</translation>
    </message>
    <message>
        <source>another copy of the program is holding %1</source>
        <translation>une autre copie du programme retient %1</translation>
    </message>
    <message>
        <source>it would be larger than %1 MiB</source>
        <translation>il dépasserait %1 Mio</translation>
    </message>
    <message>
        <source>%1 %2, and it could not be moved aside: %3</source>
        <translation>%1 %2 et n’a pas pu être mis de côté : %3</translation>
    </message>
    <message>
        <source>%1 %2; it was moved aside to %3</source>
        <translation>%1 %2 ; il a été mis de côté sous %3</translation>
    </message>
    <message>
        <source>%1 could not be saved: %2</source>
        <translation>%1 n’a pas pu être enregistré : %2</translation>
    </message>
    <message>
        <source>is empty</source>
        <translation>est vide</translation>
    </message>
    <message>
        <source>is JSON that breaks off after %1 bytes</source>
        <translation>est du JSON qui s’interrompt après %1 octets</translation>
    </message>
    <message>
        <source>is not JSON (at byte %1 of %2)</source>
        <translation>n’est pas du JSON (à l’octet %1 sur %2)</translation>
    </message>
    <message>
        <source>is not one JSON object</source>
        <translation>n’est pas un objet JSON unique</translation>
    </message>
    <message>
        <source>%1 could not be saved: it %2</source>
        <translation>%1 n’a pas pu être enregistré : il %2</translation>
    </message>
    <message>
        <source>%1 %2; it was changed just now, so nothing is saved in its place yet</source>
        <translation>%1 %2 ; il vient d’être modifié, donc rien n’est encore enregistré à sa place</translation>
    </message>
</context>
<context>
    <name>TransportError</name>
    <message>
        <source>The answer is too large</source>
        <translation>La réponse est trop volumineuse</translation>
    </message>
    <message>
        <source>The connection was lost</source>
        <translation>La connexion a été perdue</translation>
    </message>
    <message>
        <source>The request timed out</source>
        <translation>La requête a pris trop de temps</translation>
    </message>
    <message>
        <source>Only https and http addresses can be reached</source>
        <translation>Seules les adresses https et http sont accessibles</translation>
    </message>
    <message>
        <source>The service redirected too many times</source>
        <translation>Le service a redirigé trop de fois</translation>
    </message>
    <message>
        <source>The request was cancelled</source>
        <translation>La requête a été annulée</translation>
    </message>
    <message>
        <source>The service redirected to an address that is neither https nor http</source>
        <translation>Le service a redirigé vers une adresse qui n’est ni https ni http</translation>
    </message>
    <message>
        <source>The service redirected to an address that is not encrypted</source>
        <translation>Le service a redirigé vers une adresse non chiffrée</translation>
    </message>
</context>
<context>
    <name>WebsiteProtection</name>
    <message>
        <source>Activate website protection</source>
        <translation>Activer la protection web</translation>
    </message>
    <message>
        <source>Website protection ready</source>
        <translation>Protection web prête</translation>
    </message>
    <message>
        <source>Blocking Active</source>
        <translation>Blocage actif</translation>
    </message>
</context>
<context>
    <name>orvanta::AppModel</name>
    <message>
        <source>Setup required</source>
        <translation>Configuration requise</translation>
    </message>
    <message>
        <source>Orvanta API key required</source>
        <translation>Clé d’API Orvanta requise</translation>
    </message>
    <message>
        <source>Orvanta connected</source>
        <translation>Connecté à Orvanta</translation>
    </message>
</context>
</TS>
