<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru" sourcelanguage="en">
<context>
    <name>QObject</name>
    <message>
        <source>not an entry: %1</source>
        <translation>не запись: %1</translation>
    </message>
    <message>
        <source>no line break at the end of the file, which may be cut off</source>
        <translation>в конце файла нет перевода строки, файл мог быть обрезан</translation>
    </message>
    <message>
        <source>line %1: %2
</source>
        <translation>строка %1: %2
</translation>
    </message>
    <message>
        <source>a zero byte: not a text of one byte a sign</source>
        <translation>нулевой байт: это не текст с одним байтом на знак</translation>
    </message>
    <message>
        <source>not UTF-8, which the first line lets expect</source>
        <translation>не UTF-8, хотя первая строка в этой кодировке</translation>
    </message>
    <message>
        <source>UTF-8, where the first line is in %1</source>
        <translation>UTF-8, хотя первая строка в кодировке %1</translation>
    </message>
    <message>
        <source>duplicate of line %1: %2</source>
        <translation>повтор строки %1: %2</translation>
    </message>
    <message>
        <source>duplicate of the code %1 on line %2: %3</source>
        <translation>повтор кода %1 из строки %2: %3</translation>
    </message>
    <message>
        <source>%1 values where %2 are needed: %3</source>
        <translation>значений %1, а нужно %2: %3</translation>
    </message>
    <message>
        <source>cannot be built: %1: %2</source>
        <translation>система не создаётся: %1: %2</translation>
    </message>
    <message>
        <source>no category &quot;%1&quot;; nivora-cs list shows them</source>
        <translation>нет категории «%1»; их показывает nivora-cs list</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no LON,LAT</source>
        <translation>«%1» — не ДОЛГОТА,ШИРОТА</translation>
    </message>
    <message>
        <source>%1 is no place on the earth: longitude and latitude in degrees</source>
        <translation>%1 — не место на Земле: нужны долгота и широта в градусах</translation>
    </message>
    <message>
        <source>find needs words or --at LON,LAT</source>
        <translation>для find нужны слова или --at LON,LAT</translation>
    </message>
    <message>
        <source>nothing found</source>
        <translation>ничего не найдено</translation>
    </message>
    <message>
        <source>The catalogue of named systems.</source>
        <translation>Каталог именованных систем.</translation>
    </message>
    <message>
        <source>Without options the categories with their counts. With --category its systems, a
line each: EPSG code or &quot;-&quot;, name, CoordSys string, separated by tabs.
--check reads another catalogue file and reports, by line, what loading it would
pass over in silence: lines that are no entry, entries that cannot be built or
lack values, duplicates, bytes of another encoding, an end that may be cut off;
the exit status is 1 when there are any.

Examples:
  nivora-cs list
</source>
        <translation>Без параметров — категории и число систем в них. С --category — её системы,
по строке: код EPSG или «-», название, строка CoordSys, через табуляцию.
--check читает другой файл каталога и сообщает, с номерами строк, что загрузка
молча пропустила бы: строки, которые не записи, записи, которые не создаются или
в которых не хватает значений, повторы, байты другой кодировки, обрезанный конец;
код выхода 1, если нашлось хоть что-то.

Примеры:
  nivora-cs list
</translation>
    </message>
    <message>
        <source>The systems of one category, letter case does not count.</source>
        <translation>Системы одной категории, регистр букв не важен.</translation>
    </message>
    <message>
        <source>Check a catalogue file.</source>
        <translation>Проверить файл каталога.</translation>
    </message>
    <message>
        <source>Directory of the catalogues, instead of those that came with the program.</source>
        <translation>Каталог с ресурсами вместо поставленных с программой.</translation>
    </message>
    <message>
        <source>Language of names and messages, instead of the locale&apos;s.</source>
        <translation>Язык названий и сообщений вместо языка локали.</translation>
    </message>
    <message>
        <source>Directory of your own systems (UserCoordSystem.xml), instead of your data folder.</source>
        <translation>Каталог ваших систем (UserCoordSystem.xml) вместо вашей папки данных.</translation>
    </message>
    <message>
        <source>Write the library&apos;s log to stderr.</source>
        <translation>Писать журнал библиотеки в stderr.</translation>
    </message>
    <message>
        <source>%1 is given twice</source>
        <translation>%1 задан дважды</translation>
    </message>
    <message>
        <source>%1 takes no value</source>
        <translation>у %1 нет значения</translation>
    </message>
    <message>
        <source>%1 needs a value</source>
        <translation>для %1 нужно значение</translation>
    </message>
    <message>
        <source>%1 needs a value, and %2 looks like an option; %1=%2 if it is meant so</source>
        <translation>для %1 нужно значение, а %2 похоже на параметр; если так и надо, пишите %1=%2</translation>
    </message>
    <message>
        <source>%1: arguments expected %2, given %3</source>
        <translation>%1: нужно аргументов %2, задано %3</translation>
    </message>
    <message>
        <source>options begin with two dashes: %1 instead of %2</source>
        <translation>параметры начинаются с двух дефисов: %1 вместо %2</translation>
    </message>
    <message>
        <source>%1 has no option %2</source>
        <translation>у %1 нет параметра %2</translation>
    </message>
    <message>
        <source>; see nivora-cs %1 --help</source>
        <translation>; см. nivora-cs %1 --help</translation>
    </message>
    <message>
        <source>%1 needs --%2</source>
        <translation>для %1 нужен --%2</translation>
    </message>
    <message>
        <source>--%1 takes a whole number from %2 to %3, not &quot;%4&quot;</source>
        <translation>--%1: нужно целое число от %2 до %3, а не «%4»</translation>
    </message>
    <message>
        <source>Usage: nivora-cs %1 %2
%3

%4
Options:
</source>
        <translation>Вызов: nivora-cs %1 %2
%3

%4
Параметры:
</translation>
    </message>
    <message>
        <source>This text.</source>
        <translation>Этот текст.</translation>
    </message>
    <message>
        <source>--format takes %1, not &quot;%2&quot;</source>
        <translation>--format принимает %1, а не «%2»</translation>
    </message>
    <message>
        <source>What is known of a coordinate system, and its text in any notation.</source>
        <translation>Что известно о системе координат, и её запись в любом формате.</translation>
    </message>
    <message>
        <source>The text in one notation; json: all that is known, as one object.</source>
        <translation>Запись в одном формате; json: всё известное одним объектом.</translation>
    </message>
    <message>
        <source>The operations from CS to another system, and how good they are.</source>
        <translation>Операции из CS в другую систему и их точность.</translation>
    </message>
    <message>
        <source>%1, withdrawn</source>
        <translation>%1, отозвана</translation>
    </message>
    <message>
        <source>a = %1 m, 1/f = %2</source>
        <translation>a = %1 м, 1/f = %2</translation>
    </message>
    <message>
        <source>a sphere of %1 m</source>
        <translation>сфера радиусом %1 м</translation>
    </message>
    <message>
        <source>%1, as the definition has them</source>
        <translation>%1, как в определении</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Название</translation>
    </message>
    <message>
        <source>Code</source>
        <translation>Код</translation>
    </message>
    <message>
        <source>Kind</source>
        <translation>Вид</translation>
    </message>
    <message>
        <source>Unit</source>
        <translation>Единица</translation>
    </message>
    <message>
        <source>Area of use</source>
        <translation>Область применения</translation>
    </message>
    <message>
        <source>Area (longitude, latitude)</source>
        <translation>Область (долгота, широта)</translation>
    </message>
    <message>
        <source>Ellipsoid</source>
        <translation>Эллипсоид</translation>
    </message>
    <message>
        <source>Datum</source>
        <translation>Датум</translation>
    </message>
    <message>
        <source>Prime meridian</source>
        <translation>Начальный меридиан</translation>
    </message>
    <message>
        <source>Shift to WGS 84 in the text</source>
        <translation>Сдвиг к WGS 84 в записи</translation>
    </message>
    <message>
        <source>Bounds</source>
        <translation>Границы</translation>
    </message>
    <message>
        <source>Affine transformation (A B C D E F)</source>
        <translation>Аффинное преобразование (A B C D E F)</translation>
    </message>
    <message>
        <source>CoordSys</source>
        <translation>CoordSys</translation>
    </message>
    <message>
        <source>Assumed</source>
        <translation>Принято</translation>
    </message>
    <message>
        <source>Usage: nivora-cs COMMAND [options] [arguments]
Coordinate systems: what they are, and coordinates from one to another.

</source>
        <translation>Вызов: nivora-cs КОМАНДА [параметры] [аргументы]
Системы координат: что они такое, и пересчёт координат из одной в другую.

</translation>
    </message>
    <message>
        <source>
  nivora-cs COMMAND --help tells more, with examples.
  --help, --version

</source>
        <translation>
  nivora-cs КОМАНДА --help расскажет больше, с примерами.
  --help, --version

</translation>
    </message>
    <message>
        <source>
Exit status: 0 done; 1 some lines or entries failed; 2 nothing could be done.
</source>
        <translation>
Код выхода: 0 — сделано; 1 — часть строк или записей не удалась; 2 — ничего не сделано.
</translation>
    </message>
    <message>
        <source>no command &quot;%1&quot;; see nivora-cs --help</source>
        <translation>нет команды «%1»; см. nivora-cs --help</translation>
    </message>
    <message>
        <source>NAME</source>
        <translation>ИМЯ</translation>
    </message>
    <message>
        <source>nivora-cs - coordinate systems and coordinates from one to another</source>
        <translation>nivora-cs - системы координат и пересчёт координат из одной в другую</translation>
    </message>
    <message>
        <source>SYNOPSIS</source>
        <translation>ВЫЗОВ</translation>
    </message>
    <message>
        <source>COMMAND [options] [arguments]</source>
        <translation>КОМАНДА [параметры] [аргументы]</translation>
    </message>
    <message>
        <source>COORDINATE SYSTEMS</source>
        <translation>СИСТЕМЫ КООРДИНАТ</translation>
    </message>
    <message>
        <source>COMMANDS</source>
        <translation>КОМАНДЫ</translation>
    </message>
    <message>
        <source>OPTIONS OF ALL COMMANDS</source>
        <translation>ПАРАМЕТРЫ ВСЕХ КОМАНД</translation>
    </message>
    <message>
        <source>EXIT STATUS</source>
        <translation>КОД ВЫХОДА</translation>
    </message>
    <message>
        <source>0 done; 1 some lines or entries failed; 2 nothing could be done.</source>
        <translation>0 — сделано; 1 — часть строк или записей не удалась; 2 — ничего не сделано.</translation>
    </message>
    <message>
        <source>measure takes one file</source>
        <translation>measure принимает один файл</translation>
    </message>
    <message>
        <source>cannot read %1: %2</source>
        <translation>не могу прочитать %1: %2</translation>
    </message>
    <message>
        <source>Azimuth at the start: %1°
Azimuth at the end: %2°
</source>
        <translation>Азимут в начале: %1°
Азимут в конце: %2°
</translation>
    </message>
    <message>
        <source>Perimeter when closed: %1 m
Area when closed: %2 m²
</source>
        <translation>Периметр замкнутой фигуры: %1 м
Площадь замкнутой фигуры: %2 м²
</translation>
    </message>
    <message>
        <source>measure needs two points at least</source>
        <translation>для measure нужны хотя бы две точки</translation>
    </message>
    <message>
        <source>a point has no place on the earth</source>
        <translation>у одной из точек нет места на Земле</translation>
    </message>
    <message>
        <source>Geodesic length: %1 m
</source>
        <translation>Длина по геодезической: %1 м
</translation>
    </message>
    <message>
        <source>Length, azimuths and area on the ellipsoid of a system.</source>
        <translation>Длина, азимуты и площадь на эллипсоиде системы.</translation>
    </message>
    <message>
        <source>The system of the points.</source>
        <translation>Система точек.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no X,Y</source>
        <translation>«%1» — не X,Y</translation>
    </message>
    <message>
        <source>Scale along the meridian: %1
Scale along the parallel: %2
Areal scale: %3
Meridian convergence: %4°
Angular distortion: %5°
</source>
        <translation>Масштаб по меридиану: %1
Масштаб по параллели: %2
Масштаб площади: %3
Сближение меридианов: %4°
Искажение углов: %5°
</translation>
    </message>
    <message>
        <source>Military grid references of points, and points of references.</source>
        <translation>Ссылки MGRS по точкам и точки по ссылкам.</translation>
    </message>
    <message>
        <source>Read references and write points.</source>
        <translation>Читать ссылки и писать точки.</translation>
    </message>
    <message>
        <source>Digits of each coordinate, 0 to 5 (5: a metre); with --inverse decimals.</source>
        <translation>Цифр в каждой координате, от 0 до 5 (5 — метр); с --inverse знаков после точки.</translation>
    </message>
    <message>
        <source>Show a bar on stderr, when it is a terminal.</source>
        <translation>Показывать ход работы в stderr, если это терминал.</translation>
    </message>
    <message>
        <source>accuracy unknown</source>
        <translation>точность неизвестна</translation>
    </message>
    <message>
        <source>good to %1 m</source>
        <translation>точность %1 м</translation>
    </message>
    <message>
        <source>grid %1</source>
        <translation>сетка %1</translation>
    </message>
    <message>
        <source>Nothing to do: the systems are equal.
</source>
        <translation>Делать нечего: системы равны.
</translation>
    </message>
    <message>
        <source>cannot write the output: %1</source>
        <translation>не могу записать вывод: %1</translation>
    </message>
    <message>
        <source>width and height must be greater than 0</source>
        <translation>ширина и высота должны быть больше 0</translation>
    </message>
    <message>
        <source>a mesh of %1 intervals has too many points for this rectangle</source>
        <translation>в сетке из %1 интервалов слишком много точек для этого прямоугольника</translation>
    </message>
    <message>
        <source>no part of the rectangle can be transformed</source>
        <translation>ни одна часть прямоугольника не пересчитывается</translation>
    </message>
    <message>
        <source>a corner of the rectangle cannot be transformed</source>
        <translation>один из углов прямоугольника не пересчитывается</translation>
    </message>
    <message>
        <source>The rectangle that encloses a rectangle&apos;s image in another system.</source>
        <translation>Прямоугольник, охватывающий образ прямоугольника в другой системе.</translation>
    </message>
    <message>
        <source>The system of the rectangle.</source>
        <translation>Система прямоугольника.</translation>
    </message>
    <message>
        <source>The system of the answer.</source>
        <translation>Система ответа.</translation>
    </message>
    <message>
        <source>The other way: the rectangle is in the --to system.</source>
        <translation>Обратно: прямоугольник задан в системе --to.</translation>
    </message>
    <message>
        <source>Transform a mesh of points; 100 intervals when N is left out.</source>
        <translation>Пересчитать сетку точек; без N — 100 интервалов.</translation>
    </message>
    <message>
        <source>Decimals; when not given, enough for a tenth of a millimetre.</source>
        <translation>Знаков после точки; по умолчанию хватает на десятую миллиметра.</translation>
    </message>
    <message>
        <source>cannot start with the catalogues in %1: %2</source>
        <translation>не могу начать работу с каталогами из %1: %2</translation>
    </message>
    <message>
        <source>no reason is known</source>
        <translation>причина неизвестна</translation>
    </message>
    <message>
        <source>a comment</source>
        <translation>комментарий</translation>
    </message>
    <message>
        <source>the text &quot;%1&quot;</source>
        <translation>текст «%1»</translation>
    </message>
    <message>
        <source>the element &lt;%1&gt;</source>
        <translation>элемент &lt;%1&gt;</translation>
    </message>
    <message>
        <source>the attribute &quot;%1&quot;</source>
        <translation>атрибут «%1»</translation>
    </message>
    <message>
        <source>(unusable)</source>
        <translation>(не создаётся)</translation>
    </message>
    <message>
        <source>%1 is already in the branch %2; &quot;user set&quot; replaces it</source>
        <translation>%1 уже есть в ветви %2; заменить можно командой user set</translation>
    </message>
    <message>
        <source>%1 is not among your systems</source>
        <translation>%1 нет среди ваших систем</translation>
    </message>
    <message>
        <source>the notation is not known</source>
        <translation>запись неизвестного вида</translation>
    </message>
    <message>
        <source>the system cannot be made</source>
        <translation>система не создаётся</translation>
    </message>
    <message>
        <source>%1: stands twice, also as %2</source>
        <translation>%1: записана дважды, также как %2</translation>
    </message>
    <message>
        <source>%1: the same system as %2</source>
        <translation>%1: та же система, что %2</translation>
    </message>
    <message>
        <source>the next change drops what stands at %1</source>
        <translation>следующее изменение потеряет то, что стоит в %1</translation>
    </message>
    <message>
        <source>%1: %2 entries, %3 problems
</source>
        <translation>%1: записей %2, замечаний %3
</translation>
    </message>
    <message>
        <source>user %1 has no option --%2; see nivora-cs user --help</source>
        <translation>у user %1 нет параметра --%2; см. nivora-cs user --help</translation>
    </message>
    <message>
        <source>user %1 takes no further arguments; see nivora-cs user --help</source>
        <translation>user %1 не принимает других аргументов; см. nivora-cs user --help</translation>
    </message>
    <message>
        <source>user %1 takes one coordinate system; see nivora-cs user --help</source>
        <translation>user %1 принимает одну систему координат; см. nivora-cs user --help</translation>
    </message>
    <message>
        <source>user takes list, add, set, remove or check; see nivora-cs user --help</source>
        <translation>user принимает list, add, set, remove или check; см. nivora-cs user --help</translation>
    </message>
    <message>
        <source>Your own catalogue of systems.</source>
        <translation>Ваш собственный каталог систем.</translation>
    </message>
    <message>
        <source>  user list        all entries, under the names of their branches
  user add CS      a new entry
  user set CS      replaces the description of an entry, or adds the entry
  user remove CS   takes an entry out of its branch, or of every branch
  user check       looks for entries that make no system, for duplicates, for what the
                   next change would drop, and for a file that cannot be read; the
                   exit status is 1 for any of them
Entries keep the text as it was given, CoordSys text in the form in which info
shows it. A text that makes no system is refused, and the file stays as it was.

Examples:
  nivora-cs user add --branch Moscow --description &apos;Local grid&apos; &apos;CoordSys Earth Projection 8, 1001, &quot;m&quot;, 37.5, 0, 1, 0, 0&apos;
  nivora-cs user add 32637
  nivora-cs user remove 32637
</source>
        <translation>  user list        все записи под названиями их ветвей
  user add CS      новая запись
  user set CS      заменяет описание записи или добавляет её
  user remove CS   убирает запись из её ветви или из всех ветвей
  user check       ищет записи, из которых не получается система, повторы, то, что
                   потеряет следующее изменение, и нечитаемый файл; код выхода 1,
                   если что-то из этого нашлось
Записи хранят текст таким, каким он задан, строку CoordSys — в том виде, в каком
её показывает info. Текст, из которого система не получается,
не принимается, и файл остаётся прежним.

Примеры:
  nivora-cs user add --branch Moscow --description &apos;Local grid&apos; &apos;CoordSys Earth Projection 8, 1001, &quot;m&quot;, 37.5, 0, 1, 0, 0&apos;
  nivora-cs user add 32637
  nivora-cs user remove 32637
</translation>
    </message>
    <message>
        <source>The name of the entry; that of the system when not given.</source>
        <translation>Название записи; по умолчанию название системы.</translation>
    </message>
    <message>
        <source>list: write a JSON array.</source>
        <translation>list: писать массив JSON.</translation>
    </message>
    <message>
        <source>Named systems by words, code or place.</source>
        <translation>Именованные системы по словам, коду или месту.</translation>
    </message>
    <message>
        <source>Systems in use at a place, degrees.</source>
        <translation>Системы, применяемые в месте; градусы.</translation>
    </message>
    <message>
        <source>At most N lines, 50 when not given.</source>
        <translation>Не больше N строк, по умолчанию 50.</translation>
    </message>
    <message>
        <source>A JSON list.</source>
        <translation>Список JSON.</translation>
    </message>
    <message>
        <source>The codes that resemble the system, with the confidence in them.</source>
        <translation>Коды похожих систем и степень уверенности в них.</translation>
    </message>
    <message>
        <source>Datum shift</source>
        <translation>Сдвиг датума</translation>
    </message>
    <message>
        <source>by %1 good to %2 m</source>
        <translation>по %1 точность %2 м</translation>
    </message>
    <message>
        <source>to %1 m with the grid %2</source>
        <translation>%1 м с сеткой %2</translation>
    </message>
    <message>
        <source>The branch of the entry, &quot;Каталог&quot; when not given.</source>
        <translation>Ветвь записи, по умолчанию «Каталог».</translation>
    </message>
    <message>
        <source>When the points were measured, in decimal years.</source>
        <translation>Когда измерены точки, в годах с дробной частью.</translation>
    </message>
    <message>
        <source>the table has no column &quot;%1&quot;</source>
        <translation>в таблице нет столбца «%1»</translation>
    </message>
    <message>
        <source>--%1 is needed where a coordinate has several columns</source>
        <translation>если у координаты несколько столбцов, нужен --%1</translation>
    </message>
    <message>
        <source>x and y cannot be one column</source>
        <translation>x и y не могут быть одним столбцом</translation>
    </message>
    <message>
        <source>cannot make a pipe: %1</source>
        <translation>не удалось создать канал: %1</translation>
    </message>
    <message>
        <source>Pass the first N lines of each file on as they are.</source>
        <translation>Передать первые N строк каждого файла как есть.</translation>
    </message>
    <message>
        <source>Threads that work; all cores when not given. The output is the same.</source>
        <translation>Сколько потоков работает; без этого параметра все ядра. Вывод тот же.</translation>
    </message>
    <message>
        <source>%1 more lines failed, %2 in all</source>
        <translation>не удалось ещё строк: %1, всего: %2</translation>
    </message>
    <message>
        <source>%1line %2: %3</source>
        <translation>%1строка %2: %3</translation>
    </message>
    <message>
        <source>--delimiter takes one character, or &quot;tab&quot;, not &quot;%1&quot;</source>
        <translation>--delimiter: один знак или «tab», а не «%1»</translation>
    </message>
    <message>
        <source>--%1 needs --csv</source>
        <translation>--%1 требует --csv</translation>
    </message>
    <message>
        <source>--letters takes ru or en, not &quot;%1&quot;</source>
        <translation>--letters: ru или en, а не «%1»</translation>
    </message>
    <message>
        <source>--dms has its own count of decimals: --dms=N in place of --precision</source>
        <translation>у --dms своё число знаков: --dms=N вместо --precision</translation>
    </message>
    <message>
        <source>--dms: the system of the output has no degrees</source>
        <translation>--dms: в системе вывода нет градусов</translation>
    </message>
    <message>
        <source>Coordinates of points, a point a line, from one system to another.</source>
        <translation>Координаты точек, по точке в строке, из одной системы в другую.</translation>
    </message>
    <message>
        <source>The system of the input.</source>
        <translation>Система входных точек.</translation>
    </message>
    <message>
        <source>The system of the output.</source>
        <translation>Система выходных точек.</translation>
    </message>
    <message>
        <source>The other way: the input is in the --to system.</source>
        <translation>Наоборот: входные точки в системе --to.</translation>
    </message>
    <message>
        <source>Write degrees, minutes and seconds with so many decimals, 5 when left out.</source>
        <translation>Писать градусы, минуты и секунды; столько знаков после запятой, без числа 5.</translation>
    </message>
    <message>
        <source>Hemispheres of --dms: N S E W (en, when not given) or С Ю В З.</source>
        <translation>Полушария для --dms: N S E W (en, по умолчанию) или С Ю В З.</translation>
    </message>
    <message>
        <source>Commas inside numbers are decimal marks. The output has points.</source>
        <translation>Запятые внутри чисел десятичные. В выводе точки.</translation>
    </message>
    <message>
        <source>The input is a table with quoted fields.</source>
        <translation>На входе таблица с полями в кавычках.</translation>
    </message>
    <message>
        <source>Between the table&apos;s columns, &quot;tab&quot; too; found when not given.</source>
        <translation>Разделитель столбцов таблицы, в том числе «tab»; без этого параметра находится сам.</translation>
    </message>
    <message>
        <source>The table&apos;s column of x, 1 when not given; several with commas between.</source>
        <translation>Столбец x, по умолчанию 1; несколько через запятую.</translation>
    </message>
    <message>
        <source>The table&apos;s column of y, 2 when not given.</source>
        <translation>Столбец y, по умолчанию 2.</translation>
    </message>
    <message>
        <source>Column for the new x; a new one when there is none of that name.</source>
        <translation>Столбец для нового x; новый, если такого нет.</translation>
    </message>
    <message>
        <source>Column for the new y. Without these the new x and y replace the old.</source>
        <translation>Столбец для нового y. Без этих параметров новые x и y заменяют старые.</translation>
    </message>
    <message>
        <source>%1 is UTF-16: convert it to UTF-8 first</source>
        <translation>%1 в кодировке UTF-16: сначала переведите в UTF-8</translation>
    </message>
    <message>
        <source>--segmentize takes metres greater than 0, not &quot;%1&quot;</source>
        <translation>--segmentize: метры больше 0, а не «%1»</translation>
    </message>
    <message>
        <source>%1 does not say its coordinate system; give --from</source>
        <translation>%1 не сообщает систему координат; укажите --from</translation>
    </message>
    <message>
        <source>%1 cannot carry the affine transformation of the system; the coordinates are written in its projection&apos;s plane</source>
        <translation>%1 не может хранить аффинное преобразование системы; координаты записываются в плоскости её проекции</translation>
    </message>
    <message>
        <source>cannot write %1: %2</source>
        <translation>не могу записать %1: %2</translation>
    </message>
    <message>
        <source>note: %1</source>
        <translation>замечание: %1</translation>
    </message>
    <message>
        <source>lost: %1</source>
        <translation>потеряно: %1</translation>
    </message>
    <message>
        <source>%1 of %2 features left out; see %3</source>
        <translation>пропущено объектов: %1 из %2; см. %3</translation>
    </message>
    <message>
        <source>A file of features into another system, another format, or both.</source>
        <translation>Файл объектов в другую систему, другой формат или и то и другое.</translation>
    </message>
    <message>
        <source>The system of OUT; that of IN when not given.</source>
        <translation>Система OUT; если не указана, система IN.</translation>
    </message>
    <message>
        <source>The system of IN, whatever the file says.</source>
        <translation>Система IN, что бы ни сообщал файл.</translation>
    </message>
    <message>
        <source>The format of OUT, whatever its extension.</source>
        <translation>Формат OUT, каким бы ни было расширение.</translation>
    </message>
    <message>
        <source>Go on without what the format cannot hold.</source>
        <translation>Обойтись без того, что формат не хранит.</translation>
    </message>
    <message>
        <source>Replace OUT.</source>
        <translation>Заменить OUT.</translation>
    </message>
    <message>
        <source>Add vertices where a straight edge bends by more than M metres in OUT.</source>
        <translation>Добавить вершины там, где прямое ребро в OUT изгибается больше чем на M метров.</translation>
    </message>
    <message>
        <source>the table has a column &quot;%1&quot; already: give --%2</source>
        <translation>в таблице уже есть столбец «%1»: укажите --%2</translation>
    </message>
    <message>
        <source>is missing</source>
        <translation>отсутствует</translation>
    </message>
    <message>
        <source>could be read as one number with thousands or with decimals: give --decimal-comma for decimals</source>
        <translation>можно прочитать и как тысячи, и как дробь: для дробей укажите --decimal-comma</translation>
    </message>
    <message>
        <source>the line has too few columns for the result</source>
        <translation>в строке мало столбцов для результата</translation>
    </message>
    <message>
        <source>the new columns&apos; names would be UTF-8 in a table that is not</source>
        <translation>имена новых столбцов были бы в UTF-8, а таблица нет</translation>
    </message>
    <message>
        <source>%1 (the line is not UTF-8: see --encoding)</source>
        <translation>%1 (строка не в UTF-8: см. --encoding)</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be read to its end: %2</source>
        <translation>«%1» не читается до конца: %2</translation>
    </message>
    <message>
        <source>no format is written to files ending in &quot;.%1&quot;; give --format (see nivora-cs list-formats)</source>
        <translation>нет формата для записи файлов с расширением «.%1»; укажите --format (см. nivora-cs list-formats)</translation>
    </message>
    <message>
        <source>no format &quot;%1&quot; can be written; see nivora-cs list-formats</source>
        <translation>нет формата «%1» для записи; см. nivora-cs list-formats</translation>
    </message>
    <message>
        <source>The file formats that convert reads and writes.</source>
        <translation>Форматы файлов, которые читает и пишет convert.</translation>
    </message>
    <message>
        <source>A line each: name (for --format), r when it can be read and w when it can be
written, the extensions of its files, and what it is; separated by tabs.

Example:
  nivora-cs list-formats | grep -i mapinfo
</source>
        <translation>По строке на формат: имя (для --format), r, если читается, и w, если пишется,
расширения файлов и что это такое; через табуляцию.

Пример:
  nivora-cs list-formats | grep -i mapinfo
</translation>
    </message>
    <message>
        <source>the layer &quot;%1&quot; cannot be written: %2</source>
        <translation>слой «%1» не записывается: %2</translation>
    </message>
    <message>
        <source>only the first of %1 geometries of &quot;%2&quot; is written</source>
        <translation>записывается только первая из геометрий слоя «%2», всего их %1</translation>
    </message>
    <message>
        <source>the column &quot;%1&quot; cannot be written: %2</source>
        <translation>столбец «%1» не записывается: %2</translation>
    </message>
    <message>
        <source>the column &quot;%1&quot; gets the name &quot;%2&quot;</source>
        <translation>столбец «%1» получает имя «%2»</translation>
    </message>
    <message>
        <source>the column &quot;%1&quot; is %2, not %3</source>
        <translation>столбец «%1» имеет тип %2, а не %3</translation>
    </message>
    <message>
        <source>a feature of &quot;%1&quot; cannot be written: %2</source>
        <translation>объект слоя «%1» не записывается: %2</translation>
    </message>
    <message>
        <source>%1: its coordinate system cannot be used (%2); give --from</source>
        <translation>%1: его система координат непригодна (%2); укажите --from</translation>
    </message>
    <message>
        <source>%1 has no header of a MIF</source>
        <translation>в %1 нет заголовка MIF</translation>
    </message>
    <message>
        <source>MapInfo&apos;s formats cannot carry this system: %1</source>
        <translation>форматы MapInfo не могут хранить эту систему: %1</translation>
    </message>
    <message>
        <source>no grid reference</source>
        <translation>не ссылка на сетку</translation>
    </message>
    <message>
        <source>the point has no grid reference</source>
        <translation>у точки нет ссылки на сетку</translation>
    </message>
    <message>
        <source>--%1 is not for --inverse</source>
        <translation>--%1 не сочетается с --inverse</translation>
    </message>
    <message>
        <source>--%1 is for --inverse</source>
        <translation>--%1 имеет смысл только с --inverse</translation>
    </message>
    <message>
        <source>The table&apos;s column of references: a new one, &quot;mgrs&quot;, when not given; 1 with --inverse.</source>
        <translation>Столбец ссылок таблицы: если не указан, новый, «mgrs»; с --inverse первый.</translation>
    </message>
    <message>
        <source>With --inverse: the column for x, a new one, &quot;x&quot;, when not given.</source>
        <translation>С --inverse: столбец для x; если не указан, новый, «x».</translation>
    </message>
    <message>
        <source>With --inverse: the column for y, a new one, &quot;y&quot;, when not given.</source>
        <translation>С --inverse: столбец для y; если не указан, новый, «y».</translation>
    </message>
    <message>
        <source>Characters of the files, such as windows-1251 or CP866; UTF-8 when not given.</source>
        <translation>Кодировка файлов, например windows-1251 или CP866; если не указана, UTF-8.</translation>
    </message>
    <message>
        <source>the format holds no heights: they are left out</source>
        <translation>формат не хранит высот: они отбрасываются</translation>
    </message>
    <message>
        <source>the format holds no measures: they are left out</source>
        <translation>формат не хранит мер: они отбрасываются</translation>
    </message>
    <message>
        <source>the format holds no curves: they become polylines</source>
        <translation>формат не хранит кривых: они становятся ломаными</translation>
    </message>
    <message>
        <source>the format holds no surfaces: they become polygons</source>
        <translation>формат не хранит поверхностей: они становятся полигонами</translation>
    </message>
    <message>
        <source>the format carries no coordinate system (%1)</source>
        <translation>формат не хранит системы координат (%1)</translation>
    </message>
    <message>
        <source>the format holds no such geometries: they are left out</source>
        <translation>формат не хранит таких геометрий: они отбрасываются</translation>
    </message>
    <message>
        <source>could be read as two numbers or as one with a decimal comma: give --decimal-comma, or --csv when commas separate</source>
        <translation>можно прочитать и как два числа, и как одно с десятичной запятой: укажите --decimal-comma или, если запятые разделяют, --csv</translation>
    </message>
    <message>
        <source>commas could group thousands or be decimal marks: give --decimal-comma for decimals</source>
        <translation>запятые могут отделять тысячи или дробную часть: для дробей укажите --decimal-comma</translation>
    </message>
    <message>
        <source>the first angle</source>
        <translation>первый угол</translation>
    </message>
    <message>
        <source>the second angle</source>
        <translation>второй угол</translation>
    </message>
    <message>
        <source>both coordinates are latitudes</source>
        <translation>обе координаты - широты</translation>
    </message>
    <message>
        <source>both coordinates are longitudes</source>
        <translation>обе координаты - долготы</translation>
    </message>
    <message>
        <source>the line is not UTF-8: see --encoding</source>
        <translation>строка не в UTF-8: см. --encoding</translation>
    </message>
    <message>
        <source>%1 lines</source>
        <translation>строк: %1</translation>
    </message>
    <message>
        <source>%1 features</source>
        <translation>объектов: %1</translation>
    </message>
    <message>
        <source>%1 %2</source>
        <extracomment>a coordinate, and what is wrong with it: &quot;x is no number&quot;</extracomment>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>%1 exists already and is no file</source>
        <translation>%1 уже есть, и это не файл</translation>
    </message>
    <message>
        <source>%1 exists already; --overwrite replaces it</source>
        <translation>%1 уже есть; --overwrite заменит его</translation>
    </message>
    <message>
        <source>cannot write to %1: %2</source>
        <translation>не могу писать в %1: %2</translation>
    </message>
    <message>
        <source>interrupted; %1 was not written</source>
        <translation>прервано; %1 не записан</translation>
    </message>
    <message>
        <source>longer than 16 MiB</source>
        <translation>длиннее 16 МиБ</translation>
    </message>
    <message>
        <source>%1; passed on as a header</source>
        <translation>%1; передана как заголовок</translation>
    </message>
    <message>
        <source>the point cannot be transformed</source>
        <translation>точка не преобразуется</translation>
    </message>
    <message>
        <source>Reads and writes as transform does: x and y become one reference,
further columns are passed on. The points are brought to WGS 84 first. Digits are cut off, not
rounded: a reference names the cell that the point lies in. With --inverse a line
begins with a reference (&quot;37UDB1234567890&quot; or &quot;37U DB 12345 67890&quot;) and the answer
is the south-west corner of its cell.
With --csv, which transform --help explains, the reference goes into a column of its
own, and back; all other columns stay.

Examples:
  echo 37.6173 55.7558 | nivora-cs mgrs --cs 4326
  echo 37UDB1324979476 | nivora-cs mgrs --cs 28407 --inverse
</source>
        <translation>Читает и пишет как transform: x и y становятся одной ссылкой,
остальные столбцы передаются дальше. Точки сначала переводятся на WGS 84. Цифры
отбрасываются, а не округляются: ссылка называет клетку, в которой лежит точка.
С --inverse строка начинается ссылкой (&quot;37UDB1234567890&quot; или &quot;37U DB 12345 67890&quot;),
а ответ - юго-западный угол её клетки.
С --csv (см. transform --help) ссылка попадает в столбец таблицы и берётся из него;
остальные столбцы не меняются.

Примеры:
  echo 37.6173 55.7558 | nivora-cs mgrs --cs 4326
  echo 37UDB1324979476 | nivora-cs mgrs --cs 28407 --inverse
</translation>
    </message>
    <message>
        <source>%1 does not say its coordinate system: it is written as a plan in metres</source>
        <translation>%1 не сообщает систему координат: записывается как план в метрах</translation>
    </message>
    <message>
        <source>--%1 needs a value</source>
        <translation>параметру --%1 нужно значение</translation>
    </message>
    <message>
        <source>CS is a coordinate system, in any of these notations:
  32637                 EPSG code; also EPSG:32637, urn:ogc:def:crs:EPSG::32637,
                        other authorities (ESRI:102100) and OGC:CRS84
  &apos;ETRS89 / UTM zone 32N&apos;
                        a name of the EPSG database or of the catalogue
  &apos;+proj=utm +zone=37&apos;  PROJ string
  &apos;PROJCS[&quot;...&quot;]&apos;       WKT 1, WKT 2, WKT of Esri, PROJJSON
  &apos;CoordSys Earth Projection 1, 104&apos;
                        MapInfo CoordSys string; also a line of a catalogue file
  oracle:8307           Oracle Spatial number
  @FILE                 a .prj, .qpj, .wkt, .mif or .tab file

x is always first: longitude or easting, then latitude or northing, whatever
order an authority has for the system. Angles are degrees. Inside these texts the
decimal mark is the point; coordinates may have commas where transform tells so.
</source>
        <translation>CS — система координат в любой из этих записей:
  32637                 код EPSG; также EPSG:32637, urn:ogc:def:crs:EPSG::32637,
                        другие организации (ESRI:102100) и OGC:CRS84
  &apos;ETRS89 / UTM zone 32N&apos;
                        название из базы EPSG или из каталога
  &apos;+proj=utm +zone=37&apos;  строка PROJ
  &apos;PROJCS[&quot;...&quot;]&apos;       WKT 1, WKT 2, WKT фирмы Esri, PROJJSON
  &apos;CoordSys Earth Projection 1, 104&apos;
                        строка CoordSys MapInfo; также строка файла каталога
  oracle:8307           номер Oracle Spatial
  @FILE                 файл .prj, .qpj, .wkt, .mif или .tab

x всегда первый: долгота или восток, затем широта или север, какой бы порядок
ни был у системы в базе. Углы в градусах. Внутри этих
текстов дробная часть отделяется точкой; в координатах может стоять запятая, где об
этом говорит transform.
</translation>
    </message>
    <message>
        <source>--json and --format exclude each other</source>
        <translation>--json и --format исключают друг друга</translation>
    </message>
    <message>
        <source>%1, line %2: %3</source>
        <translation>%1, строка %2: %3</translation>
    </message>
    <message>
        <source>Length on a sphere of %1 m: %2 m
</source>
        <translation>Длина на сфере радиуса %1 м: %2 м
</translation>
    </message>
    <message>
        <source>as CoordSys text %1 m away at %2</source>
        <translation>как строка CoordSys — в %1 м оттуда в точке %2</translation>
    </message>
    <message>
        <source>%1, shift to WGS 84: %2
</source>
        <translation>%1, сдвиг к WGS 84: %2
</translation>
    </message>
    <message>
        <source>a processing instruction</source>
        <translation>инструкция обработки</translation>
    </message>
    <message>
        <source>a document type</source>
        <translation>тип документа</translation>
    </message>
    <message>
        <source>Characters of IN&apos;s texts that are not UTF-8, such as windows-1251.</source>
        <translation>Кодировка текстов IN, которые не в UTF-8, например windows-1251.</translation>
    </message>
    <message>
        <source>texts of &quot;%1&quot; are not UTF-8, see --encoding: they are passed on as they are</source>
        <translation>тексты слоя «%1» не в UTF-8, см. --encoding: они передаются как есть</translation>
    </message>
    <message>
        <source>note: %1 names %2, which was not asked: the network is asked only when an argument names it</source>
        <translation>замечание: в %1 указано %2, туда обращения не было: к сети программа обращается, только если её адрес назван в аргументах</translation>
    </message>
    <message>
        <source>the network is asked only when an argument names it</source>
        <translation>к сети программа обращается, только если её адрес назван в аргументах</translation>
    </message>
    <message>
        <source>cannot write %1; what was there lies in %2</source>
        <translation>не удалось записать %1; прежние файлы лежат в %2</translation>
    </message>
    <message>
        <source>%1 exists already and is no part of %2</source>
        <translation>%1 уже существует и не является частью %2</translation>
    </message>
    <message>
        <source>Go on without these: heights, types and so on, with commas between.</source>
        <translation>Продолжать без перечисленного через запятую: heights, types и так далее.</translation>
    </message>
    <message>
        <source>%1 cannot be read whole: %2</source>
        <translation>%1 не удаётся прочитать целиком: %2</translation>
    </message>
    <message>
        <source>features of &quot;%1&quot; get new numbers: the format holds none</source>
        <translation>объекты слоя «%1» получают новые номера: формат их не хранит</translation>
    </message>
    <message>
        <source>of %1 features that were written only %2 can be read again</source>
        <translation>из %1 записанных объектов обратно читаются только %2</translation>
    </message>
    <message>
        <source>the layer &quot;%1&quot; has no column &quot;%2&quot;</source>
        <translation>в слое «%1» нет столбца «%2»</translation>
    </message>
    <message>
        <source>--allow takes %1, with commas between, not &quot;%2&quot;</source>
        <translation>--allow принимает через запятую %1, но не «%2»</translation>
    </message>
    <message>
        <source>%1 more</source>
        <translation>и ещё %1</translation>
    </message>
    <message>
        <source>%1; --allow %2 goes on without</source>
        <translation>%1; с --allow %2 работа продолжится без этого</translation>
    </message>
    <message>
        <source>only the shift of the datum differs, by %1 m: the format carries that of %2, not of %3; with --to %2 the places move by so much and are true</source>
        <translation>отличается только сдвиг датума, на %1 м: формат передаёт сдвиг системы %2, а не %3; с --to %2 места сдвинутся на столько же и останутся верными</translation>
    </message>
    <message>
        <source>the format carries another system, %1 instead of %2: places are off by %3 m</source>
        <translation>формат передаёт другую систему, %1 вместо %2: места смещены на %3 м</translation>
    </message>
    <message>
        <source>&quot;%2&quot; in the column &quot;%1&quot; is left out</source>
        <translation>«%2» в столбце «%1» теряется</translation>
    </message>
    <message>
        <source>what is empty in the column &quot;%1&quot; becomes &quot;%2&quot;</source>
        <translation>пустое значение столбца «%1» становится «%2»</translation>
    </message>
    <message>
        <source>texts of the column &quot;%1&quot; are cut to %2 letters, one has %3</source>
        <translation>тексты столбца «%1» обрезаются до %2 знаков, а есть текст из %3</translation>
    </message>
    <message>
        <source>&quot;%2&quot; in the column &quot;%1&quot; becomes &quot;%3&quot;</source>
        <translation>«%2» в столбце «%1» становится «%3»</translation>
    </message>
    <message>
        <source>the geometry of a feature (%1) is left out</source>
        <translation>геометрия объекта (%1) теряется</translation>
    </message>
    <message>
        <source>a geometry (%1) becomes another (%2)</source>
        <translation>геометрия (%1) становится другой (%2)</translation>
    </message>
    <message>
        <source>places are off by %1</source>
        <translation>места смещаются на %1</translation>
    </message>
    <message>
        <source>the format holds other styles: colours, patterns or labels change</source>
        <translation>формат хранит другие стили: цвета, узоры или подписи изменятся</translation>
    </message>
    <message>
        <source>the format holds no labels and styles: they are left out</source>
        <translation>формат не хранит подписей и стилей: они теряются</translation>
    </message>
    <message>
        <source>the format holds no styles: they are left out</source>
        <translation>формат не хранит стилей: они теряются</translation>
    </message>
    <message>
        <source>the format holds no features without geometry</source>
        <translation>формат не хранит объектов без геометрии</translation>
    </message>
    <message>
        <source>a feature of several parts (%1) becomes several features</source>
        <translation>объект из нескольких частей (%1) становится несколькими объектами</translation>
    </message>
    <message>
        <source>the format holds no such geometries (%1): their features are left out</source>
        <translation>формат не хранит такой геометрии (%1): её объекты пропускаются</translation>
    </message>
    <message>
        <source>%1 m of a residual</source>
        <translation>%1 м невязки</translation>
    </message>
    <message>
        <source>Calibration</source>
        <translation>Калибровка</translation>
    </message>
    <message>
        <source>%1 ± %2</source>
        <translation>%1 ± %2</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>неизвестно</translation>
    </message>
    <message>
        <source>Model: %1</source>
        <translation>Модель: %1</translation>
    </message>
    <message>
        <source>Points: %1 of %2, redundancy %3</source>
        <translation>Точек: %1 из %2, избыточных измерений: %3</translation>
    </message>
    <message>
        <source>Residuals: RMS %1 m, greatest %2 m; standard deviation of a coordinate %3 m</source>
        <translation>Невязки: СКО %1 м, наибольшая %2 м; СКО одной координаты %3 м</translation>
    </message>
    <message>
        <source>Suspected blunder: point %1, %2 m from where the others put it</source>
        <translation>Вероятная грубая ошибка: точка %1 в %2 м от места, которое ей дают остальные</translation>
    </message>
    <message>
        <source>point</source>
        <translation>точка</translation>
    </message>
    <message>
        <source>east, m</source>
        <translation>восток, м</translation>
    </message>
    <message>
        <source>north, m</source>
        <translation>север, м</translation>
    </message>
    <message>
        <source>length, m</source>
        <translation>длина, м</translation>
    </message>
    <message>
        <source>chance, %</source>
        <translation>вероятность, %</translation>
    </message>
    <message>
        <source>left out</source>
        <translation>отключена</translation>
    </message>
    <message>
        <source>blunder?</source>
        <translation>ошибка?</translation>
    </message>
    <message>
        <source>Made from control points: %1, %2
</source>
        <translation>По опорным точкам: %1, %2
</translation>
    </message>
    <message>
        <source>Holds between the points: %1 … %2
</source>
        <translation>Действует между точками: %1 … %2
</translation>
    </message>
    <message>
        <source>This place lies outside the control points, where the fit is not proven
</source>
        <translation>Это место лежит вне опорных точек, где согласие не проверено
</translation>
    </message>
    <message>
        <source>Expected error of the fit at this place: %1 m
</source>
        <translation>Ожидаемая погрешность в этом месте: %1 м
</translation>
    </message>
    <message>
        <source>--unit: there is no unit &quot;%1&quot;</source>
        <translation>--unit: нет единицы «%1»</translation>
    </message>
    <message>
        <source>no points are kept of a system with the name &quot;%1&quot;</source>
        <translation>точки системы с названием «%1» не сохранены</translation>
    </message>
    <message>
        <source>--without: there is no point &quot;%1&quot;</source>
        <translation>--without: нет точки «%1»</translation>
    </message>
    <message>
        <source>--saved goes without --%1</source>
        <translation>--saved указывается без --%1</translation>
    </message>
    <message>
        <source>--model takes %1, not &quot;%2&quot;</source>
        <translation>--model принимает %1, а не «%2»</translation>
    </message>
    <message>
        <source>--report takes a .html or .md file, not &quot;%1&quot;</source>
        <translation>--report принимает файл .html или .md, а не «%1»</translation>
    </message>
    <message>
        <source>you have another system with the name &quot;%1&quot;</source>
        <translation>у вас есть другая система с названием «%1»</translation>
    </message>
    <message>
        <source>calibrate takes one file</source>
        <translation>calibrate принимает один файл</translation>
    </message>
    <message>
        <source>A system made from points whose coordinates are known in another.</source>
        <translation>Система по точкам, координаты которых известны в другой.</translation>
    </message>
    <message>
        <source>Reads a table of points, local and known coordinates on a line, and finds by least
squares the system in which the points have their local coordinates. Writes the
figures with their standard deviations, what is left at each point in metres, and
the system&apos;s CoordSys string and WKT 2. With --save the system becomes one of your
own: convert --from NAME and info NAME know it, and its points are kept beside it.
The exit status is 1 when a point is suspected to be a blunder.

A line holds x, y, known x, known y, with a name before them when there are five
columns or more; other orders by --name, --x, --y, --to-x and --to-y, by the names
of a header or by number. Degrees may be written as transform reads them. With
--saved the points are those that were kept; a FILE adds to them.

  auto        shift, similarity or affine: the simplest that the next does not improve on
  shift       another origin
  similarity  also turned, of another scale
  affine      also of two scales and skew
  tmerc       a transverse Mercator of its own: meridian, scale, false origin
  helmert     another datum, seven figures; --from tells projection and ellipsoid
  polynomial  of degree two, to compare with: makes no system

Examples:
  nivora-cs calibrate pairs.csv --to 28407
  nivora-cs calibrate site.csv --to 4326 --model similarity --save &apos;Site 7&apos;
  nivora-cs calibrate pairs.csv --to 32637 --without P3,P8 --report fit.html
  nivora-cs calibrate --saved &apos;Site 7&apos; --without P3 --save &apos;Site 7&apos;
</source>
        <translation>Читает таблицу точек, местные и известные координаты в строке, и находит по
наименьшим квадратам систему, в которой у точек такие местные координаты. Выводит
параметры с их СКО, невязку каждой точки в метрах, строку CoordSys и WKT 2 системы.
С --save система становится одной из ваших: convert --from NAME и info NAME её
знают, а её точки хранятся рядом. Код возврата 1, если у точки вероятна грубая
ошибка.

В строке x, y, известные x, y, а перед ними название, если столбцов пять и больше;
иной порядок задают --name, --x, --y, --to-x и --to-y, названиями из заголовка или
номерами. Градусы пишутся так, как их читает transform. С --saved точки те, что
были сохранены; FILE добавляет к ним.

  auto        сдвиг, подобие или аффинное: простейшее, которое не улучшается следующим
  shift       другое начало
  similarity  ещё поворот и масштаб
  affine      ещё два масштаба и перекос
  tmerc       своя поперечная проекция Меркатора: меридиан, масштаб, ложное начало
  helmert     другой датум, семь параметров; --from задаёт проекцию и эллипсоид
  polynomial  второй степени, для сравнения: системы не даёт

Примеры:
  nivora-cs calibrate pairs.csv --to 28407
  nivora-cs calibrate site.csv --to 4326 --model similarity --save &apos;Site 7&apos;
  nivora-cs calibrate pairs.csv --to 32637 --without P3,P8 --report fit.html
  nivora-cs calibrate --saved &apos;Site 7&apos; --without P3 --save &apos;Site 7&apos;
</translation>
    </message>
    <message>
        <source>The system of the known coordinates.</source>
        <translation>Система известных координат.</translation>
    </message>
    <message>
        <source>Projection and ellipsoid of the local coordinates, for helmert.</source>
        <translation>Проекция и эллипсоид местных координат, для helmert.</translation>
    </message>
    <message>
        <source>How the systems differ; auto when not given.</source>
        <translation>Чем системы различаются; если не указано, auto.</translation>
    </message>
    <message>
        <source>Unit of the local coordinates, m when not given.</source>
        <translation>Единица местных координат; если не указана, m.</translation>
    </message>
    <message>
        <source>Points to leave out of the fit, with commas between.</source>
        <translation>Точки, которые не участвуют, через запятую.</translation>
    </message>
    <message>
        <source>The points of a system that was saved, with those of the FILE.</source>
        <translation>Точки сохранённой системы, вместе с точками файла.</translation>
    </message>
    <message>
        <source>Keep the system under this name.</source>
        <translation>Сохранить систему под этим названием.</translation>
    </message>
    <message>
        <source>Write a JSON object.</source>
        <translation>Вывести объект JSON.</translation>
    </message>
    <message>
        <source>Write a report with a drawing, .html or .md, too.</source>
        <translation>Записать и отчёт с чертежом, .html или .md.</translation>
    </message>
    <message>
        <source>The table&apos;s column of names.</source>
        <translation>Столбец таблицы с названиями.</translation>
    </message>
    <message>
        <source>The table&apos;s column of the local x.</source>
        <translation>Столбец таблицы с местным x.</translation>
    </message>
    <message>
        <source>The table&apos;s column of the local y.</source>
        <translation>Столбец таблицы с местным y.</translation>
    </message>
    <message>
        <source>The table&apos;s column of the known x.</source>
        <translation>Столбец таблицы с известным x.</translation>
    </message>
    <message>
        <source>The table&apos;s column of the known y.</source>
        <translation>Столбец таблицы с известным y.</translation>
    </message>
    <message>
        <source>Local heights above the ellipsoid, metres, for helmert.</source>
        <translation>Местные высоты над эллипсоидом, метры, для helmert.</translation>
    </message>
    <message>
        <source>Known heights, likewise.</source>
        <translation>Известные высоты, так же.</translation>
    </message>
    <message>
        <source>Weights: 4 is twice as exact as 1.</source>
        <translation>Веса: 4 вдвое точнее, чем 1.</translation>
    </message>
    <message>
        <source>Pass over the first N lines of the table.</source>
        <translation>Пропустить первые N строк таблицы.</translation>
    </message>
    <message>
        <source>--%1 and --%2 go together</source>
        <translation>--%1 и --%2 указываются вместе</translation>
    </message>
    <message>
        <source>--%1: &quot;%2&quot; is no number</source>
        <translation>--%1: «%2» не число</translation>
    </message>
    <message>
        <source>Only this layer; it may stand several times.</source>
        <translation>Только этот слой; можно указать несколько раз.</translation>
    </message>
    <message>
        <source>Characters of OUT&apos;s texts, for formats that are not UTF-8.</source>
        <translation>Кодировка текстов OUT для форматов не в UTF-8.</translation>
    </message>
    <message>
        <source>IN is a table of points: its column of x.</source>
        <translation>IN — таблица точек: её столбец x.</translation>
    </message>
    <message>
        <source>Its column of y.</source>
        <translation>Её столбец y.</translation>
    </message>
    <message>
        <source>Commas inside numbers of these columns are decimal marks.</source>
        <translation>Запятые внутри чисел этих столбцов — десятичные.</translation>
    </message>
    <message>
        <source>%1 has no geometry; --x and --y name the columns of coordinates</source>
        <translation>в %1 нет геометрии; столбцы координат называют --x и --y</translation>
    </message>
    <message>
        <source>%1 has no layer &quot;%2&quot;, but %3</source>
        <translation>в %1 нет слоя «%2», а есть %3</translation>
    </message>
    <message>
        <source>%1 holds one layer: of %2 only the first, &quot;%3&quot;, is written; --layer names another</source>
        <translation>%1 хранит один слой: из %2 записывается только первый, «%3»; другой назовёт --layer</translation>
    </message>
    <message>
        <source>--out-encoding: %1 writes UTF-8 alone</source>
        <translation>--out-encoding: %1 пишет только в UTF-8</translation>
    </message>
    <message>
        <source>the column &quot;%1&quot; stands twice in the table</source>
        <translation>столбец «%1» стоит в таблице дважды</translation>
    </message>
    <message>
        <source>at %1</source>
        <translation>в точке %1</translation>
    </message>
    <message>
        <source>in the middle of the common area (%1)</source>
        <translation>в середине общей области (%1)</translation>
    </message>
    <message>
        <source>for the points of the input</source>
        <translation>для точек входа</translation>
    </message>
    <message>
        <source>the point has no place on the earth</source>
        <translation>у точки нет места на земле</translation>
    </message>
    <message>
        <source>Longitude: %1°
Latitude: %2°
</source>
        <translation>Долгота: %1°
Широта: %2°
</translation>
    </message>
    <message>
        <source>No scale factors: not a projection, or none that is known there
</source>
        <translation>Масштабов нет: это не проекция или они там неизвестны
</translation>
    </message>
    <message>
        <source>Off the true length: %1 ppm along the meridian, %2 ppm along the parallel
Azimuth of grid north: %3°
</source>
        <translation>Отличие от истинной длины: %1 мм/км по меридиану, %2 мм/км по параллели
Азимут севера сетки: %3°
</translation>
    </message>
    <message>
        <source>The operation for all points: a code (EPSG:1623), URN, name, WKT or PROJ text; PROJ text takes and gives x first, in the systems&apos; units.</source>
        <translation>Операция для всех точек: код (EPSG:1623), URN, название, WKT или текст PROJ; текст PROJ берёт и даёт сначала x, в единицах систем.</translation>
    </message>
    <message>
        <source>The best operation for this area of the earth, in degrees, for all points.</source>
        <translation>Лучшая операция для этой области земли в градусах, для всех точек.</translation>
    </message>
    <message>
        <source>No operation that leaves the difference of the datums out.</source>
        <translation>Никакой операции без сдвига датума.</translation>
    </message>
    <message>
        <source>No operation that is worse than M metres, or of unknown accuracy.</source>
        <translation>Никакой операции хуже M метров или неизвестной точности.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no W,S,E,N in degrees</source>
        <translation>&quot;%1&quot; — не W,S,E,N в градусах</translation>
    </message>
    <message>
        <source>--%1 takes metres greater than 0, not &quot;%2&quot;</source>
        <translation>--%1 принимает метры больше 0, а не &quot;%2&quot;</translation>
    </message>
    <message>
        <source>%1 %2 to %3 %4</source>
        <comment>west south to east north</comment>
        <translation>от %1 %2 до %3 %4</translation>
    </message>
    <message>
        <source>%1 m instead of %2 m</source>
        <translation>%1 м вместо %2 м</translation>
    </message>
    <message>
        <source>%1 m instead of a ballpark</source>
        <translation>%1 м вместо пересчёта без сдвига</translation>
    </message>
    <message>
        <source>Grids: none that is missing would help
</source>
        <translation>Файлы сдвига: ни один из отсутствующих не помог бы
</translation>
    </message>
    <message>
        <source>Missing grid: %1; see nivora-cs grids
</source>
        <translation>Нет файла сдвига: %1; см. nivora-cs grids
</translation>
    </message>
    <message>
        <source>Missing grids: %1 and %2 more; see nivora-cs grids
</source>
        <translation>Нет файлов сдвига: %1 и ещё %2; см. nivora-cs grids
</translation>
    </message>
    <message>
        <source>Elsewhere:
</source>
        <translation>В других местах:
</translation>
    </message>
    <message>
        <source>and %1 more: --explain=all, of info --all
</source>
        <translation>и ещё %1: --explain=all, у info --all
</translation>
    </message>
    <message>
        <source>exact</source>
        <translation>точно</translation>
    </message>
    <message>
        <source>%1 m</source>
        <translation>%1 м</translation>
    </message>
    <message>
        <source> (no epoch given)</source>
        <translation> (эпоха не задана)</translation>
    </message>
    <message>
        <source>ballpark, the difference of the datums is left out (%1): up to hundreds of metres</source>
        <translation>без сдвига датума (%1): ошибка до сотен метров</translation>
    </message>
    <message>
        <source>%1 itself to %2 m</source>
        <translation>сам %1 до %2 м</translation>
    </message>
    <message>
        <source>at the given epoch</source>
        <translation>на заданную эпоху</translation>
    </message>
    <message>
        <source>at the right epoch only: give --epoch</source>
        <translation>только на свою эпоху: задайте --epoch</translation>
    </message>
    <message>
        <source>Used here: no place is known, give --at
</source>
        <translation>Здесь применяется: место неизвестно, задайте --at
</translation>
    </message>
    <message>
        <source>Used %1:
</source>
        <translation>Применяется %1:
</translation>
    </message>
    <message>
        <source>the systems are equal: points are copied</source>
        <translation>системы равны: точки скопированы</translation>
    </message>
    <message>
        <source>%1 points by &quot;%2&quot;, %3</source>
        <translation>точек: %1, «%2», %3</translation>
    </message>
    <message>
        <source>%1 by other operations</source>
        <translation>другими операциями: %1</translation>
    </message>
    <message>
        <source>%1 ballpark (without %2)</source>
        <translation>без сдвига датума: %1 (%2)</translation>
    </message>
    <message>
        <source>no points</source>
        <translation>точек нет</translation>
    </message>
    <message>
        <source>%1: nobody offers it for download</source>
        <translation>%1: скачать неоткуда</translation>
    </message>
    <message>
        <source>projsync --file %1, or %2</source>
        <translation>projsync --file %1 или %2</translation>
    </message>
    <message>
        <source>A JSON object.</source>
        <translation>Объект JSON.</translation>
    </message>
    <message>
        <source>A point for which the difference of the datums would be left out fails.</source>
        <translation>Точка, для которой сдвиг датума остался бы неучтённым, не преобразуется.</translation>
    </message>
    <message>
        <source>--format goes without --to, --at and --candidates</source>
        <translation>--format не сочетается с --to, --at и --candidates</translation>
    </message>
    <message>
        <source>Writes a line &quot;Title: value&quot; for each thing that is known, and what was assumed.
With --format the system in that notation alone, fit to be saved: with its name and
its code where it has one. With --to the operation that takes it to another
system, in the middle of their common area or at the point of --at, how good it is,
what is used elsewhere and which grid files are missing; with --at longitude,
latitude, scale and the direction of grid north. --json writes all of these, too.

Examples:
  nivora-cs info 32637
  nivora-cs info --format esri 28407 &gt; zone7.prj
  nivora-cs info 27700 --to 4326
  nivora-cs info 32637 --at 413224,6179767
  nivora-cs info --format json &apos;CoordSys Earth Projection 8, 1001, &quot;m&quot;, 39, 0, 1, 7500000, 0&apos;
</source>
        <translation>Пишет по строке «Заголовок: значение» на всё, что известно, и что было принято.
С --format — только запись системы в этом формате, годная для файла: с названием
и, если он есть, с кодом. С --to — операция, которая переводит её в другую систему
в середине общей области или в точке --at, её точность, что применяется в других
местах и каких файлов сдвига нет; с --at — долгота, широта, масштаб и направление
севера сетки. --json пишет и всё это.

Примеры:
  nivora-cs info 32637
  nivora-cs info --format esri 28407 &gt; zone7.prj
  nivora-cs info 27700 --to 4326
  nivora-cs info 32637 --at 413224,6179767
  nivora-cs info --format json &apos;CoordSys Earth Projection 8, 1001, &quot;m&quot;, 39, 0, 1, 7500000, 0&apos;
</translation>
    </message>
    <message>
        <source>The same as --format json; with --to, --at or --candidates those.</source>
        <translation>То же, что --format json; с --to, --at или --candidates — они.</translation>
    </message>
    <message>
        <source>With --to: all operations, with their codes and PROJ texts.</source>
        <translation>С --to: все операции с их кодами и текстами PROJ.</translation>
    </message>
    <message>
        <source>How the system shows the surroundings of one of its points.</source>
        <translation>Как система показывает окрестность своей точки.</translation>
    </message>
    <message>
        <source>line %1: %2</source>
        <translation>строка %1: %2</translation>
    </message>
    <message>
        <source>Rhumb line: %1 m, azimuth %2°
</source>
        <translation>Локсодрома: %1 м, азимут %2°
</translation>
    </message>
    <message>
        <source> (on the ellipsoid %1)</source>
        <translation> (на эллипсоиде %1)</translation>
    </message>
    <message>
        <source>Length in the plane: %1 %2</source>
        <translation>Длина на плоскости: %1 %2</translation>
    </message>
    <message>
        <source>Area in the plane when closed: %1 %2²</source>
        <translation>Площадь на плоскости, если замкнуть: %1 %2²</translation>
    </message>
    <message>
        <source>Line %1</source>
        <translation>Линия %1</translation>
    </message>
    <message>
        <source>Reads a line of points, x and y on each line of the FILE or of standard input, and
writes its length along geodesics of the system&apos;s own ellipsoid; of two points also
the azimuths (from north, clockwise) and the rhumb line, of more the perimeter and
area of the polygon that the points make when it is closed. Beside them stand the
length on a sphere, and length and area in the plane of the coordinates (of
degrees: a degree is as long everywhere), with the ellipsoid&apos;s in the same unit.
A blank line, or one that begins with &apos;&gt;&apos;, begins another line of points. Points
are written as transform reads them, or stand in a table with --csv; a line without
one is reported and passed over, and the exit status is 1 then.

Examples:
  printf &apos;37.6 55.75\n30.3 59.94\n&apos; | nivora-cs measure --cs 4326
</source>
        <translation>Читает линию из точек, по x и y в каждой строке файла или стандартного ввода, и
пишет её длину по геодезическим эллипсоида системы; для двух точек также азимуты
(от севера по часовой стрелке) и локсодрому, для большего числа — периметр и площадь
многоугольника, который получится, если линию замкнуть. Рядом стоят длина на сфере,
длина и площадь на плоскости координат (в градусах: градус всюду одной длины) и
такие же на эллипсоиде в той же единице. Пустая строка или строка с &apos;&gt;&apos; в начале
начинает новую линию. Точки пишутся так, как их читает transform, или стоят в
таблице с --csv; о строке без точки сообщается, она пропускается, и код возврата 1.

Примеры:
  printf &apos;37.6 55.75\n30.3 59.94\n&apos; | nivora-cs measure --cs 4326
</translation>
    </message>
    <message>
        <source>A JSON object with the unrounded numbers.</source>
        <translation>Объект JSON с неокруглёнными числами.</translation>
    </message>
    <message>
        <source>--explain takes all or nothing, not &quot;%1&quot;</source>
        <translation>--explain принимает all или ничего, а не &quot;%1&quot;</translation>
    </message>
    <message>
        <source>--%1 needs --explain</source>
        <translation>--%1 требует --explain</translation>
    </message>
    <message>
        <source>Tell which operation is used for the FILEs&apos; points, at --at or in the common area, and which elsewhere; no points are written. all: everything.</source>
        <translation>Рассказать, какая операция применяется для точек файлов, в точке --at или в общей области и какие в других местах; точки не пишутся. all: всё.</translation>
    </message>
    <message>
        <source>With --explain: a JSON object.</source>
        <translation>С --explain: объект JSON.</translation>
    </message>
    <message>
        <source>the difference of the datums would be left out there</source>
        <translation>сдвиг датума там остался бы неучтённым</translation>
    </message>
    <message>
        <source>Another directory with files of datum shifts.</source>
        <translation>Ещё один каталог с файлами сдвига датума.</translation>
    </message>
    <message>
        <source>PROJ may fetch missing files of datum shifts, piece by piece.</source>
        <translation>PROJ может скачивать отсутствующие файлы сдвига датума по частям.</translation>
    </message>
    <message>
        <source>%1: here, %2</source>
        <translation>%1: есть, %2</translation>
    </message>
    <message>
        <source>Folders that are searched:
%1projsync writes to %2
</source>
        <translation>Каталоги поиска:
%1projsync пишет в %2
</translation>
    </message>
    <message>
        <source>grids takes --from and --to together</source>
        <translation>grids принимает --from и --to вместе</translation>
    </message>
    <message>
        <source>No file is missing that would help.
</source>
        <translation>Нет отсутствующих файлов, которые помогли бы.
</translation>
    </message>
    <message>
        <source>Files with datum shifts: which are here, what the missing ones would give.</source>
        <translation>Файлы сдвига датума: какие есть, что дали бы отсутствующие.</translation>
    </message>
    <message>
        <source>For a pair of systems: the files that are in use, then the missing ones that would
make positions better, each with what it gives, the operation, its area and how to
get it. Behind them the folders that are searched. Nothing is fetched: projsync,
which comes with PROJ, does that, or --network on any command.

Examples:
  nivora-cs grids --from 27700 --to 4258
  nivora-cs grids --from 4267 --to 4326 --area -80,43,-74,46
</source>
        <translation>Для пары систем: файлы, которые применяются, затем отсутствующие, с которыми
положение было бы точнее: что каждый даёт, операция, её область и где его взять. За
ними каталоги поиска. Ничего не скачивается: это делает projsync, который идёт вместе
с PROJ, или --network у любой команды.

Примеры:
  nivora-cs grids --from 27700 --to 4258
  nivora-cs grids --from 4267 --to 4326 --area -80,43,-74,46
</translation>
    </message>
    <message>
        <source>One system.</source>
        <translation>Одна система.</translation>
    </message>
    <message>
        <source>The other system.</source>
        <translation>Другая система.</translation>
    </message>
    <message>
        <source>Only files for this area, in degrees.</source>
        <translation>Только файлы для этой области, в градусах.</translation>
    </message>
    <message>
        <source>Heights: %1 (%2), %3
</source>
        <translation>Высоты: %1 (%2), %3
</translation>
    </message>
    <message>
        <source>Heights: above the ellipsoid, %1
</source>
        <translation>Высоты: над эллипсоидом, %1
</translation>
    </message>
    <message>
        <source>--z goes without --%1</source>
        <translation>--z не сочетается с --%1</translation>
    </message>
    <message>
        <source>heights are passed on: a system says nothing of them</source>
        <translation>высоты передаются как есть: одна из систем о них ничего не говорит</translation>
    </message>
    <message>
        <source>--%1 needs --z</source>
        <translation>--%1 требует --z</translation>
    </message>
    <message>
        <source>x, y, z and a year are needed</source>
        <translation>нужны x, y, z и год</translation>
    </message>
    <message>
        <source>found without &quot;%1&quot;</source>
        <translation>найдено без «%1»</translation>
    </message>
    <message>
        <source>The systems that the words mean, the likeliest first: names in either language,
codes and authorities, zones (&quot;utm 22s&quot;, &quot;zone 7&quot;), units, countries and towns,
what people say (google, swiss, lambert 93), in any order; letter case and
accents do not count, slips of the hand are forgiven. Systems in force come
before withdrawn ones, everyday ones before their twins. Words that no system
has are told and left aside. --at finds the systems whose area of use holds a
place. A line each: EPSG code, code of another authority or &quot;-&quot;, name, CoordSys
string, separated by tabs. The exit status is 1 when nothing was found.

Examples:
  nivora-cs find 32637
  nivora-cs find utm Pskov
  nivora-cs find --at 37.6,55.8 utm
</source>
        <translation>Системы, которые имеются в виду, самые вероятные первыми: имена на обоих языках,
коды и их издатели, зоны («utm 22s», «зона 7»), единицы, страны и города,
обиходные названия (google, swiss, lambert 93), в любом порядке; регистр и
диакритика не важны, описки прощаются. Действующие системы идут раньше
отменённых, обычные раньше их двойников. Слова, которых ни у кого нет,
называются и не учитываются. С --at — системы, область применения которых
содержит место. В строке: код EPSG, код другого издателя или «-», имя, строка
CoordSys, через табуляцию. Код возврата 1, если ничего не найдено.

Примеры:
  nivora-cs find 32637
  nivora-cs find utm Pskov
  nivora-cs find --at 37.6,55.8 utm
</translation>
    </message>
    <message>
        <source>the rectangle crosses the cut of the output&apos;s map: its image has several parts</source>
        <translation>прямоугольник пересекает разрез карты результата: его образ состоит из нескольких частей</translation>
    </message>
    <message>
        <source>X and Y are the smallest coordinates, W and H width and height; the answer is
written in the same order. Only the four corners are transformed, unless --mesh
is given: then a mesh of points with N intervals along the width, so that edges
that bulge and poles inside count too, and points that fail are left out. Longitudes
of a plane&apos;s rectangle over the 180th meridian run on: X 170 and W 20 end at -170.
A rectangle over the cut of the output&apos;s map has no one image. Degrees
may be written as transform reads them (36°30&apos;E); &quot;--&quot; goes before -36°30&apos;.
The exit status is 1 when the rectangle cannot be transformed.

Examples:
  nivora-cs rect --from 4326 --to 32637 36 55 3 1
  nivora-cs rect --from 4326 --to 3575 --mesh 50 -180 60 360 30
</source>
        <translation>X и Y - наименьшие координаты, W и H - ширина и высота; ответ пишется в том же
порядке. Преобразуются только четыре угла, если нет --mesh: тогда сетка точек с N
промежутками по ширине, так что учитываются и выпуклые стороны, и полюсы внутри, а
точки, которые не удались, пропускаются. Долготы прямоугольника на плоскости идут
дальше через 180-й меридиан: X 170 и W 20 кончаются на -170. У прямоугольника через
разрез карты результата нет одного образа. Градусы можно писать так же, как для
transform (36°30&apos;E); перед -36°30&apos; ставится &quot;--&quot;.
Код возврата 1, если прямоугольник не преобразуется.

Примеры:
  nivora-cs rect --from 4326 --to 32637 36 55 3 1
  nivora-cs rect --from 4326 --to 3575 --mesh 50 -180 60 360 30
</translation>
    </message>
    <message>
        <source>%1 (%2 m)</source>
        <translation>%1 (%2 м)</translation>
    </message>
    <message>
        <source>none: %1</source>
        <translation>нет: %1</translation>
    </message>
    <message>
        <source>none</source>
        <translation>нет</translation>
    </message>
    <message>
        <source>only an affine clause says where the system lies: programs on GDAL pass over it without a word and are up to %1 m off (%2)</source>
        <translation>где лежит система, говорит только предложение Affine: программы на GDAL пропускают его без сообщения и ошибаются на величину до %1 м (%2)</translation>
    </message>
    <message>
        <source>Name: %1
Kind: geocentric: x, y and z from the middle of the earth, %2; only transform --z takes it
</source>
        <translation>Название: %1
Вид: геоцентрическая: x, y и z от центра Земли, %2; её понимает только transform --z
</translation>
    </message>
    <message>
        <source>Reads and writes every vector format that GDAL knows (nivora-cs list-formats), all
layers and attributes included. The format of OUT follows from its extension.
Without --to only the format changes. The CoordSys clause of a MIF and the
projection of a TAB are read as they stand, affine transformation and bounds
included, and a MIF or TAB gets exactly its system.
OUT appears whole or not at all. What its format cannot hold is found by writing
samples and reading them again, and refused by its name, unless --allow has the
name or --lossy is given; then it is told on stderr:
  heights   heights, measures, what heights are above
  types     numbers, times and kinds of values; curves
  names     of columns
  texts     their length and letters
  styles    colours, patterns, labels
  datum     the system or its shift
  affine    an affine transformation
  features  kinds of geometry, features that are split or left out
  layers    further layers
A format of one kind of geometry, such as ESRI Shapefile, takes a mixed IN with
--split: points, lines and polygons go into files of their own, roads_lines.shp
and so on. --append adds to a layer of the same name, columns and system.
Heights are transformed where both systems know theirs (EPSG:25832+7837, 4979);
otherwise they stay as they are.
With --x and --y IN is a table, such as CSV or a spreadsheet, whose columns hold
coordinates as transform reads them; rows without are listed, too.
Features that cannot be transformed are left out and listed in OUT&apos;s name with
.rejected.csv; the exit status is 1 then.

Examples:
  nivora-cs convert parcels.tab parcels.gpkg --to 4326 --allow styles
  nivora-cs convert --from 28407 --to &apos;CoordSys Earth Projection 1, 104&apos; roads.shp roads.mif
  nivora-cs convert --from 4326 --x lon --y lat points.csv points.tab
  nivora-cs convert --segmentize 1 --to 3857 borders.mif borders.geojson
</source>
        <translation>Читает и пишет все векторные форматы, которые знает GDAL (nivora-cs list-formats),
со всеми слоями и атрибутами. Формат OUT следует из расширения. Без --to меняется
только формат. Предложение CoordSys файла MIF и проекция таблицы TAB читаются как
есть, с аффинным преобразованием и границами, и MIF или TAB получает в точности
свою систему.
OUT появляется целиком или не появляется. Что его формат не хранит, выясняется
записью и чтением образцов; это вызывает отказ, если потеря не названа в --allow и
не указан --lossy; тогда о ней сообщается в stderr:
  heights   высоты, меры, отсчётная поверхность высот
  types     числа, время и виды значений; кривые
  names     имена столбцов
  texts     длина и буквы текстов
  styles    цвета, узоры, подписи
  datum     система или её сдвиг
  affine    аффинное преобразование
  features  виды геометрии, объекты, которые делятся или пропускаются
  layers    остальные слои
Формат с одним видом геометрии, например ESRI Shapefile, принимает смешанный IN с
--split: точки, линии и полигоны попадают в отдельные файлы, roads_lines.shp и так
далее. --append добавляет к слою с тем же именем, столбцами и системой.
Высоты пересчитываются, если обе системы знают свои (EPSG:25832+7837, 4979), иначе
остаются как есть.
С --x и --y файл IN — таблица, такая как CSV или электронная таблица, в столбцах
которой стоят координаты, как их читает transform; строки без них тоже перечисляются.
Объекты, которые не преобразуются, пропускаются и перечисляются в файле с именем
OUT и окончанием .rejected.csv; код завершения тогда 1.

Примеры:
  nivora-cs convert parcels.tab parcels.gpkg --to 4326 --allow styles
  nivora-cs convert --from 28407 --to &apos;CoordSys Earth Projection 1, 104&apos; roads.shp roads.mif
  nivora-cs convert --from 4326 --x lon --y lat points.csv points.tab
  nivora-cs convert --segmentize 1 --to 3857 borders.mif borders.geojson
</translation>
    </message>
    <message>
        <source>Its column of heights.</source>
        <translation>Её столбец высот.</translation>
    </message>
    <message>
        <source>Add the features to what OUT holds.</source>
        <translation>Добавить объекты к тому, что есть в OUT.</translation>
    </message>
    <message>
        <source>One OUT for each kind of geometry: OUT_points, OUT_lines and so on.</source>
        <translation>Отдельный OUT для каждого вида геометрии: OUT_points, OUT_lines и так далее.</translation>
    </message>
    <message>
        <source>The third column is a height, transformed where both systems know theirs; of a table --z=NAME or number N.</source>
        <translation>Третий столбец — высота; она пересчитывается, если обе системы знают свои высоты. Для таблицы --z=ИМЯ или номер N.</translation>
    </message>
    <message>
        <source>With --z: the fourth column is when the point was measured; of a table --t=NAME or number N.</source>
        <translation>С --z: четвёртый столбец — время измерения точки. Для таблицы --t=ИМЯ или номер N.</translation>
    </message>
    <message>
        <source>%1 does not exist: there is nothing to append to</source>
        <translation>%1 не существует: добавлять не к чему</translation>
    </message>
    <message>
        <source>%1 cannot be read as %2</source>
        <translation>%1 не читается как %2</translation>
    </message>
    <message>
        <source>%1: nothing can be appended to files of %2</source>
        <translation>%1: к файлам %2 добавлять нельзя</translation>
    </message>
    <message>
        <source>%1 has no layer &quot;%2&quot; to append to</source>
        <translation>В %1 нет слоя «%2», к которому можно добавить</translation>
    </message>
    <message>
        <source>%1 was changed meanwhile; nothing was appended</source>
        <translation>%1 тем временем изменён; ничего не добавлено</translation>
    </message>
    <message>
        <source>--append and --%1 exclude each other</source>
        <translation>--append и --%1 исключают друг друга</translation>
    </message>
    <message>
        <source>heights stay as they are: %1</source>
        <translation>высоты остаются как есть: %1</translation>
    </message>
    <message>
        <source>features of &quot;%1&quot; get new numbers, behind those that are there</source>
        <translation>объекты «%1» получают новые номера после имеющихся</translation>
    </message>
    <message>
        <source>heights of &quot;%1&quot; are passed on: a system says nothing of them</source>
        <translation>высоты «%1» переданы как есть: одна из систем ничего о них не говорит</translation>
    </message>
    <message>
        <source>with heights: %1</source>
        <translation>с высотами: %1</translation>
    </message>
    <message>
        <source>no system</source>
        <translation>нет системы</translation>
    </message>
    <message>
        <source>the layer &quot;%1&quot; is in another system: %2, not %3; --to names the system of the output</source>
        <translation>слой «%1» в другой системе: %2, а не %3; --to задаёт систему результата</translation>
    </message>
    <message>
        <source>the layer &quot;%1&quot; holds other geometries: %2, not %3</source>
        <translation>в слое «%1» геометрия другого вида: %2, а не %3</translation>
    </message>
    <message>
        <source>--split writes a file for each kind of geometry</source>
        <translation>--split пишет отдельный файл для каждого вида геометрии</translation>
    </message>
    <message>
        <source>%1 is open in another program, or was not written to its end: there is %2</source>
        <translation>%1 открыт в другой программе или не дописан: есть %2</translation>
    </message>
    <message>
        <source>the output does not say what its heights are above (%1)</source>
        <translation>результат не говорит, от чего отсчитаны высоты (%1)</translation>
    </message>
    <message>
        <source>x, y and z cannot be one column</source>
        <translation>x, y и z не могут быть одним столбцом</translation>
    </message>
    <message>
        <source>%1 km</source>
        <translation>%1 км</translation>
    </message>
    <message>
        <source>   around %1</source>
        <translation>   около %1</translation>
    </message>
    <message>
        <source>, %1 from the place</source>
        <translation>, %1 от места</translation>
    </message>
    <message>
        <source>; %1 % of the data inside the area of use</source>
        <translation>; %1 % данных внутри области применения</translation>
    </message>
    <message>
        <source>   assumed: %1
</source>
        <translation>   принято: %1
</translation>
    </message>
    <message>
        <source>%1 (withdrawn)</source>
        <translation>%1 (отозвана)</translation>
    </message>
    <message>
        <source>   or %1, %2 away
</source>
        <translation>   или %1, на %2 в стороне
</translation>
    </message>
    <message>
        <source>   or %1 more
</source>
        <translation>   или ещё %1
</translation>
    </message>
    <message>
        <source>   not decidable: more than 30 systems put the data on the same ground
</source>
        <translation>   не решить: больше 30 систем кладут данные на то же место
</translation>
    </message>
    <message>
        <source>   the same on the data
</source>
        <translation>   на этих данных одно и то же
</translation>
    </message>
    <message>
        <source>   up to %1 apart: a position of %2 known better than %3 would decide
</source>
        <translation>   расходятся до %1: решило бы положение точки %2, известное лучше %3
</translation>
    </message>
    <message>
        <source>stated as %1: %2 % of the data lie inside its area of use
</source>
        <translation>указана %1: в её области применения лежит %2 % данных
</translation>
    </message>
    <message>
        <source>stated as %1, but %2 % of the data lie inside its area of use</source>
        <translation>указана %1, но в её области применения лежит %2 % данных</translation>
    </message>
    <message>
        <source>%1: fits %2</source>
        <translation>%1: подходит %2</translation>
    </message>
    <message>
        <source>   its datum&apos;s shift is not known: the place may be hundreds of metres off
</source>
        <translation>   сдвиг её датума неизвестен: место может отстоять на сотни метров
</translation>
    </message>
    <message>
        <source>no system&apos;s area of use holds these coordinates</source>
        <translation>этих координат нет в области применения ни одной системы</translation>
    </message>
    <message>
        <source>Which system the coordinates of a file may be in.</source>
        <translation>В какой системе могут быть координаты файла.</translation>
    </message>
    <message>
        <source>The northing or latitude stands first, for certain.</source>
        <translation>Первым точно стоит северное направление или широта.</translation>
    </message>
    <message>
        <source>The system that is stated for the data, whatever the file says.</source>
        <translation>Система, указанная для данных, что бы ни говорил файл.</translation>
    </message>
    <message>
        <source>At most N entries, 5 when not given.</source>
        <translation>Не больше N записей, без параметра 5.</translation>
    </message>
    <message>
        <source>The table&apos;s column of x.</source>
        <translation>Столбец x таблицы.</translation>
    </message>
    <message>
        <source>The table&apos;s column of y.</source>
        <translation>Столбец y таблицы.</translation>
    </message>
    <message>
        <source>%1 holds no coordinates</source>
        <translation>в %1 нет координат</translation>
    </message>
    <message>
        <source>Replace a report that is there.</source>
        <translation>Заменить отчёт, который уже есть.</translation>
    </message>
    <message>
        <source>features of &quot;%1&quot; get new numbers</source>
        <translation>объекты «%1» получают новые номера</translation>
    </message>
    <message>
        <source>%1 is written, but never read: what it loses cannot be found out</source>
        <translation>%1 только пишется и не читается: что в нём теряется, узнать нельзя</translation>
    </message>
    <message>
        <source>nothing was written to %1</source>
        <translation>в %1 ничего не записано</translation>
    </message>
    <message>
        <source>EPSG:%1, moved</source>
        <translation>EPSG:%1, перемещена</translation>
    </message>
    <message>
        <source>Based on</source>
        <translation>На основе</translation>
    </message>
    <message>
        <source>Missing grid: %1, without which nothing is transformed
</source>
        <translation>Нет сетки %1, без которой ничего не пересчитывается
</translation>
    </message>
    <message>
        <source>%1 is the code of another plane: %2</source>
        <translation>%1 — код другой плоскости: %2</translation>
    </message>
    <message>
        <source>no points: %1 is missing, without which nothing is transformed</source>
        <translation>ни одной точки: нет файла %1, без которого ничего не пересчитывается</translation>
    </message>
    <message>
        <source>%1 point by &quot;%2&quot;, %3</source>
        <translation>точек: %1, «%2», %3</translation>
    </message>
    <message>
        <source>Reads the FILEs, or standard input (&quot;-&quot; or no FILE), and writes to standard output.
A line holds x and y, separated by blanks, tabs, a comma or a semicolon. Further
columns are passed on as they are, heights too unless --z is given: then compound,
three-dimensional and geocentric systems (EPSG:25832+7837, 4979, 4978) keep their
heights, and a point fails whose height could not be converted, such as for lack of
a geoid&apos;s file. Blank lines and lines beginning with &apos;#&apos; are passed on. A line
whose point cannot be transformed gets &quot;*&quot; for x and y and keeps the rest
(37.6,91,Moscow becomes *,*,Moscow); a line without a point becomes &quot;*&quot;, &quot;*&quot; and its whole text. Both are
reported on stderr (&quot;line 7: why&quot;, the first 20 of them) and make the exit status
1. So is a first line of words, a header, but it is passed on as text; --skip
passes lines on without a word. Input of any size is worked through in blocks.

Degrees may be written as 55.7558, 55°45&apos;21.5&quot;N, 55d45&apos;21.5&quot;, N55:45:21.5 or, with
both hemispheres, in separate or quoted columns (55 45 21.5 N 37 37 2 E); letters
are N S E W or С Ю В З. x is first unless the letters say otherwise; the output
always has x first. Decimal commas are understood where commas cannot separate
columns (37,6173;55,7558); where both are possible the line fails and says so.
Thousands may be set apart (7 411 000,5;6 182 000) where blanks separate no columns.

A line on stderr says at the end by which operations the points went and how good
those are: 5 points by &quot;NTF to WGS 84&quot;, 2 m; 3 ballpark. Ballpark points are those
whose datums&apos; difference was left out, since nothing is known for the place;
--strict makes them fail.

With --csv the input is a table with quoted fields (RFC 4180) and, when columns
are named or the first line&apos;s coordinates are words, a header. Without --x and --y
its names tell the columns (lon and lat, x and y, easting and northing, долгота and
широта), else they are the first two. All other columns stay as they are, byte for
byte. Angles in several columns: --x 1,2,3,4 --out-x X.

Examples:
  echo 37.6173 55.7558 | nivora-cs transform --from 4326 --to 32637
  nivora-cs transform --from 28407 --to 4326 --precision 7 points.csv &gt; out.csv
  printf &apos;lon;lat\n37.6;55.7\n&apos; | nivora-cs transform --from 4326 --to 28407 --csv --x lon --y lat
  nivora-cs transform --from @moscow.prj --to &apos;CoordSys Earth Projection 1, 104&apos; --inverse
</source>
        <translation>Читает файлы FILE или стандартный ввод (&quot;-&quot; или без FILE) и пишет в стандартный
вывод. В строке x и y через пробелы, табуляцию, запятую или точку с запятой. Остальные
столбцы передаются как есть, и высоты тоже, если нет --z: с ним составные, трёхмерные
и геоцентрические системы (EPSG:25832+7837, 4979, 4978) сохраняют свои высоты, и не
преобразуется точка, высоту которой не пересчитать, например без файла геоида. Пустые
строки и
строки, начинающиеся с &apos;#&apos;, передаются. Строка, точка которой не преобразуется,
получает &quot;*&quot; вместо x и y и сохраняет остальное (37.6,91,Moscow становится
*,*,Moscow); строка без точки становится &quot;*&quot;, &quot;*&quot; и всем своим текстом. О тех и
других сообщается в stderr (строка и причина, первые 20), и код возврата 1. То же
с первой строкой из слов, заголовком, но она передаётся как текст; --skip передаёт
строки молча. Вход любого размера обрабатывается блоками.

Градусы можно писать 55.7558, 55°45&apos;21.5&quot;N, 55d45&apos;21.5&quot;, N55:45:21.5 или, с обоими
полушариями, в отдельных столбцах или в кавычках (55 45 21.5 N 37 37 2 E); буквы
N S E W или С Ю В З. Сначала x, если буквы не говорят иного; в выводе всегда
сначала x. Десятичные запятые понимаются там, где запятая не может разделять
столбцы (37,6173;55,7558); где возможно и то и другое, строка отвергается с
объяснением. Тысячи могут быть отделены (7 411 000,5;6 182 000) там, где пробелы не
разделяют столбцы.

В конце строка в stderr говорит, какими операциями прошли точки и какова точность:
точек: 5, «NTF to WGS 84», 2 м; без сдвига датума: 3. Без сдвига датума идут точки,
для места которых ничего не известно; с --strict они считаются неудачными.

С --csv на входе таблица с полями в кавычках (RFC 4180) и, если столбцы названы или
координаты первой строки - слова, с заголовком. Без --x и --y столбцы берутся по его
названиям (lon и lat, x и y, easting и northing, долгота и широта), без них - первые
два. Остальные столбцы не меняются ни на байт. Углы в нескольких столбцах:
--x 1,2,3,4 --out-x X.

Примеры:
  echo 37.6173 55.7558 | nivora-cs transform --from 4326 --to 32637
  nivora-cs transform --from 28407 --to 4326 --precision 7 points.csv &gt; out.csv
  printf &apos;lon;lat\n37.6;55.7\n&apos; | nivora-cs transform --from 4326 --to 28407 --csv --x lon --y lat
  nivora-cs transform --from @moscow.prj --to &apos;CoordSys Earth Projection 1, 104&apos; --inverse
</translation>
    </message>
    <message>
        <source>local coordinates: %1</source>
        <translation>местные координаты: %1</translation>
    </message>
    <message>
        <source>; --to names a plane, degrees need a geographic system</source>
        <translation>; --to называет плоскость, градусам нужна географическая система</translation>
    </message>
    <message>
        <source>known coordinates: %1</source>
        <translation>известные координаты: %1</translation>
    </message>
    <message>
        <source>texts and names of files must be UTF-8 here: %1</source>
        <translation>тексты и имена файлов здесь должны быть в UTF-8: %1</translation>
    </message>
    <message>
        <source>--%1 takes a decimal year such as 2024.5, not &quot;%2&quot;</source>
        <translation>--%1: десятичный год, например 2024.5, а не «%2»</translation>
    </message>
    <message>
        <source>When the output&apos;s coordinates shall hold, where that is another year.</source>
        <translation>На какой год нужны координаты результата, если он другой.</translation>
    </message>
    <message>
        <source>With --explain: a point of the input&apos;s system; X,Y,Z with --z.</source>
        <translation>С --explain: точка в системе входных данных; с --z – X,Y,Z.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no X,Y or X,Y,Z</source>
        <translation>«%1» – не X,Y и не X,Y,Z</translation>
    </message>
    <message>
        <source>without geometry there is no %1, but %2</source>
        <translation>без геометрии нет %1, есть %2</translation>
    </message>
    <message>
        <source>the format holds %1 alone, and GDAL converts into it; --to %2 does so by an operation that is told and can be chosen</source>
        <translation>формат хранит только %1, и GDAL пересчитывает в неё; --to %2 сделает это операцией, которая названа и может быть выбрана</translation>
    </message>
    <message>
        <source>x, y and z are needed; --decimal-comma for commas in numbers</source>
        <translation>нужны x, y и z; запятые в числах – с --decimal-comma</translation>
    </message>
    <message>
        <source>%1 has no MID: its columns are empty</source>
        <translation>у %1 нет файла MID: столбцы пусты</translation>
    </message>
    <message>
        <source>%1 has %2 objects, but its MID %3 records: values may stand at other objects</source>
        <translation>в %1 объектов %2, а записей в его MID %3: значения могут оказаться у других объектов</translation>
    </message>
    <message>
        <source>%1 is damaged in line %2: features may be missing or other than they were</source>
        <translation>%1 повреждён в строке %2: объекты могут отсутствовать или быть не такими, как были</translation>
    </message>
    <message>
        <source>--near: no town, region or country &quot;%1&quot; is known; give LON,LAT in degrees</source>
        <translation>--near: ни город, ни область, ни страна «%1» не известны; задайте ДОЛГОТА,ШИРОТА в градусах</translation>
    </message>
    <message>
        <source>Reads a table of points, &quot;-&quot; for standard input, or a file of any format that
convert reads, and writes the systems whose area of use holds the coordinates, the
likeliest first: near the place that --near names, else by towns, by what is in
force where the data would lie, and by how small the area is. Each with the place
on the map, its distance, the share of the data inside the area, and what was
assumed: axes swapped, kilometres, feet, the zone&apos;s number left out or put before
the easting, degrees, minutes and seconds in one number. Systems that lie within
20 m of each other on the data are one entry: the data cannot tell them apart; the
metres between them and the point whose known position would decide are told. A
system that the file states, or --from, is doubted when most of the data lie
outside its area of use. The exit status is 1 then, and when nothing fits.

Without --x and --y a table&apos;s columns are found by their names (x, lon, easting,
y, lat, northing and their likes), else they are the first two.

Examples:
  nivora-cs guess points.csv --near Tver
  nivora-cs guess points.csv --near Romania
  nivora-cs guess parcels.shp --near 37.6,55.7 --json
</source>
        <translation>Читает таблицу точек («-» – стандартный ввод) или файл любого формата, который
читает convert, и выводит системы, в области применения которых лежат координаты,
вероятные первыми: ближе к месту из --near, иначе по городам, по тому, что
действует там, где лежали бы данные, и по малости области. Для каждой – место на
карте, расстояние, доля данных внутри области и что принято: оси переставлены,
километры, футы, номер зоны опущен или добавлен перед координатой, градусы, минуты
и секунды одним числом. Системы, которые на этих данных расходятся не больше чем
на 20 м, – одна запись: данные их не различают; сказаны метры между ними и точка,
известное положение которой решило бы. В системе, указанной в файле или в --from,
высказывается сомнение, если большинство данных лежит вне её области применения.
Тогда код завершения 1, как и если ничего не подходит.

Без --x и --y столбцы таблицы находятся по именам (x, lon, easting, y, lat,
northing и подобные), иначе это первые два.

Примеры:
  nivora-cs guess points.csv --near Тверь
  nivora-cs guess points.csv --near Румыния
  nivora-cs guess parcels.shp --near 37.6,55.7 --json
</translation>
    </message>
    <message>
        <source>A town near the data, a region or country that holds them, or a place in degrees.</source>
        <translation>Город рядом с данными, область или страна, где они лежат, или место в градусах.</translation>
    </message>
    <message>
        <source>places of &quot;%1&quot; move by up to %2 m: a table counts in steps of its bounds, which the system states; without its bounds they are fine enough</source>
        <translation>места слоя «%1» сдвигаются до %2 м: таблица считает шагами своих границ, которые задаёт система; без её границ шаги достаточно малы</translation>
    </message>
    <message>
        <source>convert reads and writes files, no pipes: &quot;%1&quot; is none</source>
        <translation>convert читает и пишет файлы, а не каналы: «%1» не файл</translation>
    </message>
    <message>
        <source>%1 is a folder, which is never replaced: other files may have been put into it; remove it, or write to another name</source>
        <translation>%1 — папка, а папки не заменяются: в ней могут быть и чужие файлы; удалите её или выберите другое имя</translation>
    </message>
    <message>
        <source>files ending in &quot;.%1&quot; are not found as %2: write .%3</source>
        <translation>файлы на «.%1» не находятся как %2: пишите .%3</translation>
    </message>
    <message>
        <source>note: the network does not answer: %1</source>
        <translation>замечание: сеть не отвечает: %1</translation>
    </message>
    <message>
        <source>the table has &quot;%1&quot; before &quot;%2&quot;: say with --x and --y which of them is the easting</source>
        <translation>в таблице «%1» стоит перед «%2»: укажите через --x и --y, где восточная координата</translation>
    </message>
    <message>
        <source>x is the column &quot;%1&quot;, y is the column &quot;%2&quot;</source>
        <translation>x - столбец «%1», y - столбец «%2»</translation>
    </message>
    <message>
        <source>the first line has &quot;%1&quot; before &quot;%2&quot;, but x is read first: give --csv, with --x and --y where names leave it open</source>
        <translation>в первой строке «%1» стоит перед «%2», а первым читается x: задайте --csv, а если названия неоднозначны, --x и --y</translation>
    </message>
    <message>
        <source> (points come in files or by standard input: echo X Y | nivora-cs …)</source>
        <translation> (точки берутся из файлов или стандартного ввода: echo X Y | nivora-cs …)</translation>
    </message>
    <message>
        <source>blanks could group thousands: separate the columns by semicolons or tabs, or give --csv --delimiter &quot; &quot; where they separate</source>
        <translation>пробелы могут отделять тысячи: разделите столбцы точкой с запятой или табуляцией либо задайте --csv --delimiter &quot; &quot;, если разделяют они</translation>
    </message>
    <message>
        <source>could be degrees, minutes and seconds: give their letters (55 45 21 N), or --csv with the columns of --x and --y</source>
        <translation>могут быть градусами, минутами и секундами: напишите буквы (55 45 21 N) или задайте --csv со столбцами --x и --y</translation>
    </message>
    <message>
        <source>the points lie outside the bounds of their system, with x and y exchanged inside: is y first?</source>
        <translation>точки лежат вне границ своей системы, а если поменять x и y местами, внутри: не первым ли стоит y?</translation>
    </message>
    <message>
        <source>geometries that cannot be read: %1, the first in feature %2</source>
        <translation>геометрии, которые не читаются: %1, первая в объекте %2</translation>
    </message>
</context>
</TS>
