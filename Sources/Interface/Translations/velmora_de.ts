<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en_US">
<context>
    <name>AddressDialog</name>
    <message>
        <source>Add a television</source>
        <translation>Fernseher hinzufügen</translation>
    </message>
    <message>
        <source>Type its name or address on this network.</source>
        <translation>Geben Sie seinen Namen oder seine Adresse in diesem Netzwerk ein.</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
    <message>
        <source>Name or address</source>
        <translation>Name oder Adresse</translation>
    </message>
</context>
<context>
    <name>CodeDialog</name>
    <message>
        <source>Continue</source>
        <translation>Weiter</translation>
    </message>
</context>
<context>
    <name>CodeField</name>
    <message>
        <source>Code, four digits</source>
        <translation>Code, vier Ziffern</translation>
    </message>
</context>
<context>
    <name>Commands</name>
    <message>
        <source>Ctrl</source>
        <translation>Strg</translation>
    </message>
    <message>
        <source>Shift</source>
        <translation>Umsch</translation>
    </message>
    <message>
        <source>Space</source>
        <translation>Leertaste</translation>
    </message>
    <message>
        <source>New Window</source>
        <translation>Neues Fenster</translation>
    </message>
    <message>
        <source>Open Movie…</source>
        <translation>Film öffnen …</translation>
    </message>
    <message>
        <source>Reveal Prepared Movie</source>
        <translation>Fertigen Film zeigen</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Wiedergeben</translation>
    </message>
    <message>
        <source>Start Over</source>
        <translation>Von vorn beginnen</translation>
    </message>
    <message>
        <source>Cancel Preparing</source>
        <translation>Aufbereitung abbrechen</translation>
    </message>
    <message>
        <source>Back 10 Seconds</source>
        <translation>10 Sekunden zurück</translation>
    </message>
    <message>
        <source>Forward 10 Seconds</source>
        <translation>10 Sekunden vor</translation>
    </message>
    <message>
        <source>Back 1 Minute</source>
        <translation>1 Minute zurück</translation>
    </message>
    <message>
        <source>Forward 1 Minute</source>
        <translation>1 Minute vor</translation>
    </message>
    <message>
        <source>Check for Updates…</source>
        <translation>Nach Aktualisierungen suchen …</translation>
    </message>
    <message>
        <source>Close Window</source>
        <translation>Fenster schließen</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Open Folder…</source>
        <translation>Ordner öffnen …</translation>
    </message>
</context>
<context>
    <name>ContentView</name>
    <message>
        <source>Main Menu (F10)</source>
        <translation>Hauptmenü (F10)</translation>
    </message>
    <message>
        <source>Main Menu</source>
        <translation>Hauptmenü</translation>
    </message>
</context>
<context>
    <name>DialogFrame</name>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>DropOverlay</name>
    <message>
        <source>Drop to Open</source>
        <translation>Zum Öffnen ablegen</translation>
    </message>
</context>
<context>
    <name>Durations</name>
    <message>
        <source>Less than a minute left</source>
        <translation>Noch weniger als eine Minute</translation>
    </message>
    <message>
        <source>%1 min left</source>
        <translation>Noch %1 min</translation>
    </message>
    <message>
        <source>%1 h %2 min left</source>
        <translation>Noch %1 h %2 min</translation>
    </message>
    <message>
        <source>1 second</source>
        <translation>1 Sekunde</translation>
    </message>
    <message numerus="yes">
        <source>%n seconds</source>
        <translation>
            <numerusform>%n Sekunde</numerusform>
            <numerusform>%n Sekunden</numerusform>
        </translation>
    </message>
    <message>
        <source>1 minute</source>
        <translation>1 Minute</translation>
    </message>
    <message numerus="yes">
        <source>%n minutes</source>
        <translation>
            <numerusform>%n Minute</numerusform>
            <numerusform>%n Minuten</numerusform>
        </translation>
    </message>
    <message>
        <source>1 hour</source>
        <translation>1 Stunde</translation>
    </message>
    <message numerus="yes">
        <source>%n hours</source>
        <translation>
            <numerusform>%n Stunde</numerusform>
            <numerusform>%n Stunden</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 %2</source>
        <translation>%1 %2</translation>
    </message>
</context>
<context>
    <name>EmptyState</name>
    <message>
        <source>Drop a movie here</source>
        <translation>Legen Sie hier einen Film ab</translation>
    </message>
    <message>
        <source>Any MKV or MP4, or the folder it came in.
Subtitles next to the file come along.</source>
        <translation>MKV oder MP4, oder den Ordner, in dem er liegt.
Untertitel neben der Datei kommen mit.</translation>
    </message>
    <message>
        <source>Choose Movie…</source>
        <translation>Film wählen …</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Strg+O</translation>
    </message>
    <message>
        <source>Open a movie</source>
        <translation>Film öffnen</translation>
    </message>
    <message>
        <source>Ctrl+N</source>
        <translation>Strg+N</translation>
    </message>
    <message>
        <source>New window, for a second TV</source>
        <translation>Neues Fenster, für einen zweiten Fernseher</translation>
    </message>
</context>
<context>
    <name>FailedView</name>
    <message>
        <source>Couldn&apos;t get this movie ready</source>
        <translation>Dieser Film ließ sich nicht aufbereiten</translation>
    </message>
    <message>
        <source>Choose Another Movie…</source>
        <translation>Anderen Film wählen …</translation>
    </message>
    <message>
        <source>Re-encode and Try Again</source>
        <translation>Neu kodieren und noch einmal versuchen</translation>
    </message>
</context>
<context>
    <name>InputField</name>
    <message>
        <source>Hide Password</source>
        <translation>Passwort verbergen</translation>
    </message>
    <message>
        <source>Show Password</source>
        <translation>Passwort zeigen</translation>
    </message>
</context>
<context>
    <name>KeyHint</name>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
</context>
<context>
    <name>MenuItemRow</name>
    <message>
        <source>Forget This Television</source>
        <translation>Diesen Fernseher vergessen</translation>
    </message>
</context>
<context>
    <name>MessageDialog</name>
    <message>
        <source>Not Now</source>
        <translation>Nicht jetzt</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Get It…</source>
        <translation>Herunterladen …</translation>
    </message>
</context>
<context>
    <name>MoviePickerWindow</name>
    <message>
        <source>Places</source>
        <translation>Orte</translation>
    </message>
    <message>
        <source>Enclosing Folder (Backspace)</source>
        <translation>Übergeordneter Ordner (Rücktaste)</translation>
    </message>
    <message>
        <source>Enclosing Folder</source>
        <translation>Übergeordneter Ordner</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Open This Folder</source>
        <translation>Diesen Ordner öffnen</translation>
    </message>
</context>
<context>
    <name>MovieScreen</name>
    <message>
        <source>Audio and subtitles</source>
        <translation>Ton und Untertitel</translation>
    </message>
    <message>
        <source>Back 10 seconds (←)</source>
        <translation>10 Sekunden zurück (←)</translation>
    </message>
    <message>
        <source>Back 10 seconds</source>
        <translation>10 Sekunden zurück</translation>
    </message>
    <message>
        <source>Forward 10 seconds (→)</source>
        <translation>10 Sekunden vor (→)</translation>
    </message>
    <message>
        <source>Forward 10 seconds</source>
        <translation>10 Sekunden vor</translation>
    </message>
</context>
<context>
    <name>Notifications</name>
    <message>
        <source>Ready to play.</source>
        <translation>Bereit zur Wiedergabe.</translation>
    </message>
    <message>
        <source>Couldn&apos;t get “%1” ready</source>
        <translation>„%1“ ließ sich nicht aufbereiten</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Zeigen</translation>
    </message>
</context>
<context>
    <name>Pairing</name>
    <message numerus="yes">
        <source>%n hours</source>
        <translation>
            <numerusform>%n Stunde</numerusform>
            <numerusform>%n Stunden</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n minutes</source>
        <translation>
            <numerusform>%n Minute</numerusform>
            <numerusform>%n Minuten</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n seconds</source>
        <translation>
            <numerusform>%n Sekunde</numerusform>
            <numerusform>%n Sekunden</numerusform>
        </translation>
    </message>
    <message>
        <source>1 second</source>
        <translation>1 Sekunde</translation>
    </message>
    <message>
        <source>The television wants a pause before the next try. Wait a few minutes.</source>
        <translation>Der Fernseher verlangt vor dem nächsten Versuch eine Pause. Warten Sie einige Minuten.</translation>
    </message>
    <message>
        <source>The television wants a pause before the next try. Wait %1, then try again.</source>
        <translation>Der Fernseher verlangt vor dem nächsten Versuch eine Pause. Warten Sie %1 und versuchen Sie es dann noch einmal.</translation>
    </message>
    <message>
        <source>That was not the code the television expected. Try again with the code it shows then.</source>
        <translation>Das war nicht der Code, den der Fernseher erwartet hat. Versuchen Sie es mit dem Code, den er dann zeigt, noch einmal.</translation>
    </message>
    <message>
        <source>The television has seen too many wrong codes. Restart it, then try again.</source>
        <translation>Der Fernseher hat zu viele falsche Codes bekommen. Starten Sie ihn neu und versuchen Sie es dann noch einmal.</translation>
    </message>
    <message>
        <source>The television cannot remember any more devices. Remove one in its AirPlay settings, then try again.</source>
        <translation>Der Fernseher kann sich keine weiteren Geräte merken. Entfernen Sie eines in seinen AirPlay-Einstellungen und versuchen Sie es dann noch einmal.</translation>
    </message>
    <message>
        <source>The television lets only members of its home play. In its AirPlay settings, under &quot;Allow Access&quot;, choose &quot;Everyone&quot; or &quot;Anyone on the Same Network&quot;.</source>
        <translation>Der Fernseher lässt nur Mitglieder seines Zuhauses abspielen. Wählen Sie in seinen AirPlay-Einstellungen unter „Zugriff erlauben“ die Option „Jeder“ oder „Jeder im selben Netzwerk“.</translation>
    </message>
    <message>
        <source>The television is busy with another device. Stop that, then try again.</source>
        <translation>Der Fernseher ist mit einem anderen Gerät beschäftigt. Beenden Sie das und versuchen Sie es dann noch einmal.</translation>
    </message>
    <message>
        <source>The television does not take new devices now. Close what is open in its AirPlay settings, then try again.</source>
        <translation>Der Fernseher nimmt gerade keine neuen Geräte an. Schließen Sie, was in seinen AirPlay-Einstellungen offen ist, und versuchen Sie es dann noch einmal.</translation>
    </message>
    <message>
        <source>The television wants a code before it plays.</source>
        <translation>Der Fernseher verlangt einen Code, bevor er abspielt.</translation>
    </message>
    <message>
        <source>The television does not know this computer any more. Pair it again with a new code.</source>
        <translation>Der Fernseher kennt diesen Computer nicht mehr. Koppeln Sie ihn mit einem neuen Code noch einmal.</translation>
    </message>
    <message>
        <source>The television could not prove that it is the one you paired. If you reset or replaced it, forget it here and pair again.</source>
        <translation>Der Fernseher konnte nicht beweisen, dass er der ist, den Sie gekoppelt haben. Falls Sie ihn zurückgesetzt oder ersetzt haben, lassen Sie ihn hier vergessen und koppeln Sie neu.</translation>
    </message>
    <message>
        <source>The television answered in a way that makes no sense. Restart it, then try again.</source>
        <translation>Der Fernseher hat etwas Unverständliches geantwortet. Starten Sie ihn neu und versuchen Sie es dann noch einmal.</translation>
    </message>
    <message>
        <source>The television refused to pair and gave no reason. Try once more; if that does not help, restart it.</source>
        <translation>Der Fernseher hat die Kopplung ohne Begründung abgelehnt. Versuchen Sie es noch einmal; wenn das nicht hilft, starten Sie ihn neu.</translation>
    </message>
</context>
<context>
    <name>PasswordDialog</name>
    <message>
        <source>Continue</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
</context>
<context>
    <name>PlaybackFailure</name>
    <message>
        <source>The television wants a password before it plays.</source>
        <translation>Der Fernseher verlangt ein Passwort, bevor er abspielt.</translation>
    </message>
    <message>
        <source>The television does not let this computer play. In its AirPlay settings, allow access for everyone on the network.</source>
        <translation>Der Fernseher lässt diesen Computer nicht abspielen. Erlauben Sie in seinen AirPlay-Einstellungen den Zugriff für alle im Netzwerk.</translation>
    </message>
    <message>
        <source>This television does not take movies by address (it may only take mirroring).</source>
        <translation>Dieser Fernseher nimmt keine Filme über eine Adresse an (vielleicht nur gespiegelte Bildschirme).</translation>
    </message>
    <message>
        <source>The television is busy with another device.</source>
        <translation>Der Fernseher ist mit einem anderen Gerät beschäftigt.</translation>
    </message>
    <message>
        <source>The television reports trouble of its own (500). Switching it off and on may help.</source>
        <translation>Der Fernseher meldet eine eigene Störung (500). Aus- und wieder Einschalten kann helfen.</translation>
    </message>
    <message>
        <source>The television refuses the movie (%1).</source>
        <translation>Der Fernseher lehnt den Film ab (%1).</translation>
    </message>
    <message>
        <source>The television cannot show this kind of picture on its screen (%1).</source>
        <translation>Der Fernseher kann Bilder dieser Art auf seinem Bildschirm nicht zeigen (%1).</translation>
    </message>
    <message>
        <source>The television could not load the movie (%1).</source>
        <translation>Der Fernseher konnte den Film nicht laden (%1).</translation>
    </message>
    <message>
        <source>The television does not play this movie (%1).</source>
        <translation>Der Fernseher spielt diesen Film nicht ab (%1).</translation>
    </message>
    <message>
        <source>The television at %1 does not answer.</source>
        <translation>Der Fernseher unter %1 antwortet nicht.</translation>
    </message>
    <message>
        <source>Nothing takes AirPlay at %1. Is AirPlay switched on there, and is the port right?</source>
        <translation>Unter %1 nimmt nichts AirPlay an. Ist AirPlay dort eingeschaltet, und stimmt der Port?</translation>
    </message>
    <message>
        <source>There is no way to %1 from this computer&apos;s network.</source>
        <translation>Aus dem Netzwerk dieses Computers führt kein Weg zu %1.</translation>
    </message>
    <message>
        <source>The television at %1 broke off the connection.</source>
        <translation>Der Fernseher unter %1 hat die Verbindung abgebrochen.</translation>
    </message>
    <message>
        <source>What answers at %1 does not speak AirPlay.</source>
        <translation>Was unter %1 antwortet, spricht kein AirPlay.</translation>
    </message>
    <message>
        <source>The television stopped answering.</source>
        <translation>Der Fernseher antwortet nicht mehr.</translation>
    </message>
    <message>
        <source>The television sent an answer that makes no sense.</source>
        <translation>Der Fernseher hat etwas Unverständliches geantwortet.</translation>
    </message>
    <message>
        <source>The television broke off the connection before the movie began.</source>
        <translation>Der Fernseher hat die Verbindung abgebrochen, bevor der Film begann.</translation>
    </message>
    <message>
        <source>Something asked for the movie from another address than the television&apos;s, and was refused.</source>
        <translation>Etwas hat den Film von einer anderen Adresse als der des Fernsehers verlangt und wurde abgewiesen.</translation>
    </message>
    <message>
        <source>The television never asked for the movie. A firewall on this computer may be blocking port %1.</source>
        <translation>Der Fernseher hat den Film nie abgerufen. Vielleicht sperrt eine Firewall auf diesem Computer den Port %1.</translation>
    </message>
    <message>
        <source>The television fetched the beginning of the movie and stopped: it does not take this video.</source>
        <translation>Der Fernseher hat den Anfang des Films geholt und dann aufgehört: Dieses Video nimmt er nicht an.</translation>
    </message>
    <message>
        <source>The television fetched the movie and gave up: it does not take this video.</source>
        <translation>Der Fernseher hat den Film geholt und aufgegeben: Dieses Video nimmt er nicht an.</translation>
    </message>
    <message>
        <source>The television fetched the movie but showed no picture of it.</source>
        <translation>Der Fernseher hat den Film geholt, aber kein Bild davon gezeigt.</translation>
    </message>
    <message>
        <source>The television did not take this password.</source>
        <translation>Der Fernseher hat dieses Passwort nicht angenommen.</translation>
    </message>
    <message>
        <source>The television did not take the code. Type the one that it shows now.</source>
        <translation>Der Fernseher hat den Code nicht angenommen. Geben Sie den ein, den er jetzt zeigt.</translation>
    </message>
    <message>
        <source>The television broke off the pairing. Type the code that it shows now.</source>
        <translation>Der Fernseher hat die Kopplung abgebrochen. Geben Sie den Code ein, den er jetzt zeigt.</translation>
    </message>
    <message>
        <source>The television is reachable only under a link-local IPv6 address, over which it cannot fetch a movie.</source>
        <translation>Der Fernseher ist nur unter einer verbindungslokalen IPv6-Adresse erreichbar, über die er keinen Film holen kann.</translation>
    </message>
    <message>
        <source>The connection to the television was lost.</source>
        <translation>Die Verbindung zum Fernseher ist abgerissen.</translation>
    </message>
    <message>
        <source>The movie was stopped at the television.</source>
        <translation>Der Film wurde am Fernseher angehalten.</translation>
    </message>
    <message>
        <source>Another device took over the television.</source>
        <translation>Ein anderes Gerät hat den Fernseher übernommen.</translation>
    </message>
</context>
<context>
    <name>Player</name>
    <message>
        <source>The movie cannot be opened.</source>
        <translation>Der Film lässt sich nicht öffnen.</translation>
    </message>
    <message>
        <source>%1 channels</source>
        <translation>%1 Kanäle</translation>
    </message>
    <message>
        <source>Track %1</source>
        <translation>Spur %1</translation>
    </message>
    <message>
        <source>Velmora is playing a movie</source>
        <translation>Velmora spielt einen Film ab</translation>
    </message>
    <message>
        <source>The movie cannot be played: libmpv does not start.</source>
        <translation>Der Film lässt sich nicht abspielen: libmpv startet nicht.</translation>
    </message>
    <message>
        <source>There is nothing in this file that can be played.</source>
        <translation>In dieser Datei ist nichts, das sich abspielen lässt.</translation>
    </message>
    <message>
        <source>The movie cannot be played (%1).</source>
        <translation>Der Film lässt sich nicht abspielen (%1).</translation>
    </message>
</context>
<context>
    <name>PrepareError</name>
    <message>
        <source>That doesn&apos;t look like a video file.</source>
        <translation>Das sieht nicht nach einer Videodatei aus.</translation>
    </message>
    <message>
        <source>Couldn&apos;t read the file: %1</source>
        <translation>Die Datei ließ sich nicht lesen: %1</translation>
    </message>
    <message>
        <source>Not enough free disk space to prepare this movie. Needs about %1, %2 free.</source>
        <translation>Der freie Speicherplatz reicht nicht, um diesen Film aufzubereiten. Gebraucht werden etwa %1, frei sind %2.</translation>
    </message>
    <message>
        <source>ffmpeg couldn&apos;t convert the file.</source>
        <translation>ffmpeg konnte die Datei nicht umwandeln.</translation>
    </message>
    <message>
        <source>ffmpeg couldn&apos;t convert the file:
%1</source>
        <translation>ffmpeg konnte die Datei nicht umwandeln:
%1</translation>
    </message>
    <message>
        <source>The bundled ffmpeg is missing. Rebuild the app, or install ffmpeg with Homebrew:  brew install ffmpeg</source>
        <translation>ffmpeg fehlt. Installieren Sie es:  apt install ffmpeg</translation>
    </message>
    <message>
        <source>That file can&apos;t be read.</source>
        <translation>Diese Datei lässt sich nicht lesen.</translation>
    </message>
    <message>
        <source>No video stream found in that file.</source>
        <translation>In dieser Datei ist keine Videospur.</translation>
    </message>
    <message>
        <source>Another Velmora is already preparing this movie. Try again when it has finished.</source>
        <translation>Ein anderes Velmora bereitet diesen Film schon auf. Versuchen Sie es noch einmal, wenn es fertig ist.</translation>
    </message>
    <message>
        <source>Preparation was cancelled.</source>
        <translation>Die Aufbereitung wurde abgebrochen.</translation>
    </message>
</context>
<context>
    <name>Preparer</name>
    <message>
        <source>Re-encoding video for Apple TV (hardware)</source>
        <translation>Video wird für Apple TV neu kodiert (Hardware)</translation>
    </message>
    <message>
        <source>Re-encoding video for Apple TV (software)</source>
        <translation>Video wird für Apple TV neu kodiert (Software)</translation>
    </message>
    <message>
        <source>Repacking, re-encoding audio only</source>
        <translation>Wird umgepackt, nur der Ton wird neu kodiert</translation>
    </message>
    <message>
        <source>Repacking for Apple TV, no re-encode</source>
        <translation>Wird für Apple TV umgepackt, ohne neu zu kodieren</translation>
    </message>
    <message numerus="yes">
        <source>%1 · %n image subtitle track(s) left out</source>
        <translation>
            <numerusform>%1 · %n Bilduntertitelspur ausgelassen</numerusform>
            <numerusform>%1 · %n Bilduntertitelspuren ausgelassen</numerusform>
        </translation>
    </message>
    <message>
        <source>Prepared earlier, reusing</source>
        <translation>Früher aufbereitet, wird wieder benutzt</translation>
    </message>
    <message>
        <source>Waiting for another Velmora to finish preparing this movie…</source>
        <translation>Wartet, bis ein anderes Velmora diesen Film aufbereitet hat …</translation>
    </message>
    <message>
        <source>Looking at the file…</source>
        <translation>Datei wird angesehen …</translation>
    </message>
    <message>
        <source>Already Apple-native, playing as is</source>
        <translation>Passt schon zu Apple TV, wird abgespielt, wie er ist</translation>
    </message>
    <message>
        <source>Finishing up…</source>
        <translation>Gleich fertig …</translation>
    </message>
</context>
<context>
    <name>ProgressTrack</name>
    <message>
        <source>Preparing the movie</source>
        <translation>Film wird aufbereitet</translation>
    </message>
</context>
<context>
    <name>RoutePicker</name>
    <message>
        <source>Play on</source>
        <translation>Wiedergeben auf</translation>
    </message>
    <message>
        <source>Add a television by address…</source>
        <translation>Über Adresse hinzufügen …</translation>
    </message>
</context>
<context>
    <name>Scrubber</name>
    <message>
        <source>Timeline</source>
        <translation>Zeitleiste</translation>
    </message>
</context>
<context>
    <name>Session</name>
    <message>
        <source>No movie found at %1.</source>
        <translation>Unter %1 ist kein Film.</translation>
    </message>
    <message>
        <source>Couldn&apos;t copy %1 next to the movie.</source>
        <translation>%1 ließ sich nicht neben den Film kopieren.</translation>
    </message>
    <message>
        <source>Looking at the file…</source>
        <translation>Datei wird angesehen …</translation>
    </message>
    <message>
        <source>Choose a movie</source>
        <translation>Film wählen</translation>
    </message>
    <message>
        <source>Pick a movie. Subtitles next to it come along automatically.</source>
        <translation>Wählen Sie einen Film. Untertitel daneben kommen von selbst mit.</translation>
    </message>
    <message>
        <source>The movie stopped unexpectedly.</source>
        <translation>Der Film ist unerwartet stehen geblieben.</translation>
    </message>
</context>
<context>
    <name>Televisions</name>
    <message>
        <source>Televisions are not found by themselves, because the service Avahi (the package avahi-daemon) is not running. A television&apos;s address can be typed instead.</source>
        <translation>Fernseher werden nicht von selbst gefunden, weil der Dienst Avahi (das Paket avahi-daemon) nicht läuft. Stattdessen kann man die Adresse eines Fernsehers eingeben.</translation>
    </message>
    <message>
        <source>Televisions are not found by themselves, because the service Avahi refuses to look for them (%1). A television&apos;s address can be typed instead.</source>
        <translation>Fernseher werden nicht von selbst gefunden, weil der Dienst Avahi die Suche ablehnt (%1). Stattdessen kann man die Adresse eines Fernsehers eingeben.</translation>
    </message>
    <message>
        <source>There is no computer or television named “%1” on the network.</source>
        <translation>Im Netzwerk gibt es keinen Computer oder Fernseher namens „%1“.</translation>
    </message>
    <message>
        <source>Several televisions are named “%1”. Say which by its address.</source>
        <translation>Mehrere Fernseher heißen „%1“. Nennen Sie den gemeinten mit seiner Adresse.</translation>
    </message>
    <message>
        <source>No television named “%1” was found.</source>
        <translation>Ein Fernseher namens „%1“ wurde nicht gefunden.</translation>
    </message>
    <message>
        <source>%1 was not found on the network.</source>
        <translation>%1 wurde im Netzwerk nicht gefunden.</translation>
    </message>
    <message>
        <source>%1 %2.</source>
        <translation>%1 %2.</translation>
    </message>
    <message>
        <source>%1 is busy with something else. Stop that first, then try again.</source>
        <translation>%1 ist mit etwas anderem beschäftigt. Beenden Sie das zuerst und versuchen Sie es dann noch einmal.</translation>
    </message>
    <message>
        <source>%1 only lets people of its own home in. In its AirPlay settings, set “Allow Access” to “Anyone on the Same Network” or “Everyone”, then try again.</source>
        <translation>%1 lässt nur Personen aus dem eigenen Zuhause zu. Stellen Sie in den AirPlay-Einstellungen „Zugriff erlauben“ auf „Jeder im selben Netzwerk“ oder „Jeder“ und versuchen Sie es dann noch einmal.</translation>
    </message>
    <message>
        <source>“%1” names no port between 1 and 65535.</source>
        <translation>„%1“ nennt keinen Port zwischen 1 und 65535.</translation>
    </message>
    <message>
        <source>“%1” is no address. It is written HOST, HOST:PORT or [IPv6]:PORT.</source>
        <translation>„%1“ ist keine Adresse. Man schreibt sie HOST, HOST:PORT oder [IPv6]:PORT.</translation>
    </message>
    <message>
        <source>does not say what it can play</source>
        <translation>sagt nicht, was er abspielen kann</translation>
    </message>
    <message>
        <source>takes screen mirroring only</source>
        <translation>nimmt nur gespiegelte Bildschirme an</translation>
    </message>
    <message>
        <source>plays sound only</source>
        <translation>gibt nur Ton wieder</translation>
    </message>
    <message>
        <source>does not play movies</source>
        <translation>spielt keine Filme ab</translation>
    </message>
    <message>
        <source>has only a link-local IPv6 address, over which it cannot fetch a movie</source>
        <translation>hat nur eine verbindungslokale IPv6-Adresse, über die er keinen Film holen kann</translation>
    </message>
    <message>
        <source>Televisions are not found by themselves, because this computer&apos;s message bus (D-Bus) cannot be reached. A television&apos;s address can be typed instead.</source>
        <translation>Fernseher werden nicht von selbst gefunden, weil der Nachrichtenbus (D-Bus) dieses Computers nicht erreichbar ist. Stattdessen kann man die Adresse eines Fernsehers eingeben.</translation>
    </message>
</context>
<context>
    <name>TimelineRow</name>
    <message>
        <source>%1%</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Cancel Preparing (Ctrl+.)</source>
        <translation>Aufbereitung abbrechen (Strg+.)</translation>
    </message>
    <message>
        <source>Cancel Preparing</source>
        <translation>Aufbereitung abbrechen</translation>
    </message>
</context>
<context>
    <name>ToolsMissingNotice</name>
    <message>
        <source>ffmpeg isn&apos;t installed, so movies can&apos;t be prepared yet.</source>
        <translation>ffmpeg ist nicht installiert, deshalb lassen sich noch keine Filme aufbereiten.</translation>
    </message>
    <message>
        <source>Copied</source>
        <translation>Kopiert</translation>
    </message>
    <message>
        <source>Copy the command %1</source>
        <translation>Befehl %1 kopieren</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
</context>
<context>
    <name>Updater</name>
    <message>
        <source>The update server could not be reached. Check the network and try again.</source>
        <translation>Der Aktualisierungsserver ist nicht erreichbar. Prüfen Sie das Netzwerk und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>your system&apos;s package manager</source>
        <translation>der Paketverwaltung Ihres Systems</translation>
    </message>
    <message>
        <source>What the update server sent is damaged. Try again later.</source>
        <translation>Was der Aktualisierungsserver gesendet hat, ist beschädigt. Versuchen Sie es später noch einmal.</translation>
    </message>
    <message>
        <source>What the update server sent is not signed by Velmora&apos;s publisher, so it was ignored.</source>
        <translation>Was der Aktualisierungsserver gesendet hat, ist nicht vom Herausgeber von Velmora signiert und wurde deshalb nicht beachtet.</translation>
    </message>
    <message>
        <source>What the update server sent is about another program, so it was ignored.</source>
        <translation>Was der Aktualisierungsserver gesendet hat, betrifft ein anderes Programm und wurde deshalb nicht beachtet.</translation>
    </message>
    <message>
        <source>The update server sent older news than last time, so it was ignored. Try again later.</source>
        <translation>Der Aktualisierungsserver hat ältere Nachrichten gesendet als beim letzten Mal; sie wurden nicht beachtet. Versuchen Sie es später noch einmal.</translation>
    </message>
    <message>
        <source>Couldn&apos;t check for updates</source>
        <translation>Die Suche nach Aktualisierungen ist gescheitert</translation>
    </message>
    <message>
        <source>Updates come with your system</source>
        <translation>Aktualisierungen kommen mit Ihrem System</translation>
    </message>
    <message>
        <source>This Velmora was installed by %1, which also keeps it up to date.</source>
        <translation>Dieses Velmora wurde von %1 installiert und wird auch so aktuell gehalten.</translation>
    </message>
    <message>
        <source>This build of Velmora does not know where its updates are published.</source>
        <translation>Diese Ausgabe von Velmora weiß nicht, wo ihre Aktualisierungen veröffentlicht werden.</translation>
    </message>
    <message>
        <source>Velmora is up to date</source>
        <translation>Velmora ist aktuell</translation>
    </message>
    <message>
        <source>Version %1 is the newest.</source>
        <translation>Version %1 ist die neueste.</translation>
    </message>
    <message>
        <source>You have version %1.</source>
        <translation>Sie haben Version %1.</translation>
    </message>
    <message>
        <source>Velmora %1 is available</source>
        <translation>Velmora %1 ist verfügbar</translation>
    </message>
</context>
<context>
    <name>velmora::MovieBrowser</name>
    <message>
        <source>Home</source>
        <translation>Persönlicher Ordner</translation>
    </message>
    <message>
        <source>This computer</source>
        <translation>Dieser Computer</translation>
    </message>
    <message>
        <source>No movies here</source>
        <translation>Hier sind keine Filme</translation>
    </message>
</context>
<context>
    <name>velmora::MovieDecisions</name>
    <message>
        <source>Apple TV</source>
        <translation>Apple TV</translation>
    </message>
    <message>
        <source>Resume on %1 (Space)</source>
        <translation>Auf %1 fortsetzen (Leertaste)</translation>
    </message>
    <message>
        <source>Resume and choose an Apple TV (Space)</source>
        <translation>Fortsetzen und ein Apple TV wählen (Leertaste)</translation>
    </message>
    <message>
        <source>Starts on %1 when ready</source>
        <translation>Beginnt auf %1, sobald der Film bereit ist</translation>
    </message>
    <message>
        <source>Choose an Apple TV (Space)</source>
        <translation>Apple TV wählen (Leertaste)</translation>
    </message>
    <message>
        <source>Sending to %1…</source>
        <translation>Wird an %1 gesendet …</translation>
    </message>
    <message>
        <source>Pause (Space)</source>
        <translation>Pause (Leertaste)</translation>
    </message>
    <message>
        <source>Play (Space)</source>
        <translation>Wiedergeben (Leertaste)</translation>
    </message>
    <message>
        <source>%1 didn&apos;t take it. Try again (Space)</source>
        <translation>%1 hat den Film nicht angenommen. Noch einmal versuchen (Leertaste)</translation>
    </message>
    <message>
        <source>The Apple TV</source>
        <translation>Das Apple TV</translation>
    </message>
    <message>
        <source>Playing on %1</source>
        <translation>Läuft auf %1</translation>
    </message>
    <message>
        <source>Choose an Apple TV</source>
        <translation>Apple TV wählen</translation>
    </message>
    <message>
        <source>Waking %1…</source>
        <translation>%1 wird geweckt …</translation>
    </message>
    <message>
        <source>Paused on %1</source>
        <translation>Angehalten auf %1</translation>
    </message>
    <message>
        <source>%1%</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>Audio</source>
        <translation>Ton</translation>
    </message>
    <message>
        <source>Subtitles</source>
        <translation>Untertitel</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>Aus</translation>
    </message>
</context>
<context>
    <name>velmora::MoviePicker</name>
    <message>
        <source>Movies</source>
        <translation>Filme</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>Alle Dateien</translation>
    </message>
</context>
<context>
    <name>velmora::PickerDecisions</name>
    <message>
        <source>Refused. Next try in %1</source>
        <translation>Abgelehnt. Nächster Versuch in %1</translation>
    </message>
    <message>
        <source>Waking…</source>
        <translation>Wird geweckt …</translation>
    </message>
    <message>
        <source>Connecting…</source>
        <translation>Wird verbunden …</translation>
    </message>
    <message>
        <source>Not seen on the network</source>
        <translation>Im Netzwerk nicht zu sehen</translation>
    </message>
    <message>
        <source>Asks for a code</source>
        <translation>Fragt nach einem Code</translation>
    </message>
    <message>
        <source>Asks for a password</source>
        <translation>Fragt nach einem Passwort</translation>
    </message>
    <message>
        <source>Looking for televisions…</source>
        <translation>Fernseher werden gesucht …</translation>
    </message>
    <message>
        <source>No television found</source>
        <translation>Kein Fernseher gefunden</translation>
    </message>
    <message>
        <source>This computer</source>
        <translation>Dieser Computer</translation>
    </message>
    <message>
        <source>Enter the code for %1</source>
        <translation>Code für %1 eingeben</translation>
    </message>
    <message>
        <source>Password for %1</source>
        <translation>Passwort für %1</translation>
    </message>
    <message>
        <source>Type the four digits shown on the television.</source>
        <translation>Geben Sie die vier Ziffern ein, die der Fernseher zeigt.</translation>
    </message>
    <message>
        <source>This television asks for a password.</source>
        <translation>Dieser Fernseher fragt nach einem Passwort.</translation>
    </message>
    <message>
        <source>That code didn&apos;t match.</source>
        <translation>Dieser Code stimmt nicht.</translation>
    </message>
    <message>
        <source>That password didn&apos;t match.</source>
        <translation>Dieses Passwort stimmt nicht.</translation>
    </message>
    <message>
        <source>Try again in %1.</source>
        <translation>Nächster Versuch in %1.</translation>
    </message>
    <message>
        <source>Not sent to %1: it asks for a code</source>
        <translation>Nicht an %1 gesendet: fragt nach einem Code</translation>
    </message>
    <message>
        <source>Not sent to %1: it asks for a password</source>
        <translation>Nicht an %1 gesendet: fragt nach einem Passwort</translation>
    </message>
</context>
<context>
    <name>velmora::VelmoraApp</name>
    <message>
        <source>Choose the folder of a movie</source>
        <translation>Ordner eines Films wählen</translation>
    </message>
    <message>
        <source>The largest movie in the folder is opened.</source>
        <translation>Der größte Film im Ordner wird geöffnet.</translation>
    </message>
</context>
</TS>
