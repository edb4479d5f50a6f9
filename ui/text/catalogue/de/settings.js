// The settings, the known devices and the dialog about the program.

/** @type {Record<keyof typeof import('../en/settings.js').settings, import('../en.js').Message>} */
export const settings = {
  'settings.title': 'Einstellungen',
  'settings.name': 'Dieses Gerät',
  'settings.nameHint':
    'Unter diesem Namen sehen es andere Geräte. Ein leeres Feld steht für den Namen des Rechners.',
  'settings.nameChange': 'Umbenennen',
  'settings.visible': 'In der Nähe sichtbar',
  'settings.visibleHint': 'Geräte in diesem Netzwerk sehen dieses.',
  'settings.startup': 'Beim Anmelden starten',
  'settings.startupHint': 'Brevanholt wartet im Hintergrund auf das, was ankommt.',
  'settings.console': 'Entwicklerkonsole',
  'settings.consoleHint': 'Die Methoden des Programms aufrufen und seine Ereignisse beobachten.',
  'settings.folder': 'Empfangsordner',
  'settings.folderHint':
    'Empfangene Dateien werden in diesem Ordner unter „Downloads“ gespeichert.',
  'settings.folderChange': 'Ändern',
  'settings.folderOpen': 'Öffnen',
  'settings.folderOpenNamed': 'Den Empfangsordner öffnen',
  'settings.folderChanged': 'Was vorher ankam, bleibt im Ordner {folder}.',
  'settings.folderOpenOld': 'Diesen Ordner öffnen',
  'settings.folderFailed': 'Dieser Ordner kann nicht angelegt werden.',
  'settings.notifications': 'Benachrichtigungen',
  'settings.notificationsUnknown':
    'Benachrichtigen, wenn etwas ankommt, während dieses Fenster geschlossen ist.',
  'settings.notificationsGranted':
    'Sie werden benachrichtigt, wenn etwas ankommt, während dieses Fenster geschlossen ist.',
  'settings.notificationsDenied':
    'Dieser Desktop lässt Brevanholt keine Benachrichtigungen zeigen.',
  'settings.allow': 'Erlauben',
  'settings.allowNamed': 'Benachrichtigungen erlauben',
  'known.title': 'Bekannte Geräte',
  'known.none': 'Noch keine. Vergleichen Sie einen Code mit einem Gerät, um es zu kennen.',
  'known.since': 'Bekannt seit {date}',
  'known.seen': 'zuletzt gesehen {date}',
  'known.near': 'jetzt in der Nähe',
  'known.forget': 'Vergessen',
  'known.forgetNamed': '{device} vergessen',
  'known.accept': 'Ohne Nachfrage annehmen',
  'known.acceptNamed': 'Von {device} ohne Nachfrage annehmen',
  'known.never': 'Nie',
  'known.upTo': 'Bis {size}',
  'about.title': 'Über Brevanholt',
  'about.fingerprint': 'Fingerabdruck dieses Geräts',
  'about.version': 'Version {version}',
  'about.what': 'Sendet Dateien, Ordner und Text an Geräte in der Nähe.',
};
