// The developer console.

/** @type {Record<keyof typeof import('../en/developer_console.js').developerConsole, import('../en.js').Message>} */
export const developerConsole = {
  'console.title': 'Entwicklerkonsole',
  'console.method': 'Methode',
  'console.arguments': 'Argumente',
  'console.format': 'JSON; Bytes als {example}',
  'console.call': 'Aufrufen',
  'console.clear': 'Liste leeren',
  'console.entries': 'Aufrufe und Ereignisse, die neuesten zuerst',
  'console.calledWith': 'Aufgerufen mit',
  'console.reply': 'Antwort',
  'console.error': 'Fehler',
  'console.event': 'Ereignis',
  'console.answered': '{method} hat in {time} geantwortet',
  'console.failed': '{method} ist fehlgeschlagen',
  'console.quick': 'unter {time}',
  'console.noHex': '„{text}“ ist nicht hexadezimal.',
  'console.noBase64': '„{text}“ ist kein Base64.',
  'console.noJson': 'Die Argumente sind kein JSON. {why}',
  'console.takesMap': '„{method}“ erwartet eine Zuordnung von Argumenten.',
  'console.requires': '„{method}“ braucht „{key}“ vom Typ {type}; ohne ihn endete das Programm.',
  'console.cut': '… Der Rest wird nicht gezeigt.',
};
