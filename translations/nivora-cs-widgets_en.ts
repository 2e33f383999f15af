<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="ru">
<context>
    <name>WidgetTexts</name>
    <message>
        <source>&amp;Открыть</source>
        <translation>&amp;Open</translation>
    </message>
    <message>
        <source>&amp;Сохранить…</source>
        <translation>&amp;Save…</translation>
    </message>
    <message>
        <source>Модель</source>
        <translation>Model</translation>
    </message>
    <message>
        <source>СКО, м</source>
        <translation>RMS, m</translation>
    </message>
    <message>
        <source>Наибольшая, м</source>
        <translation>Greatest, m</translation>
    </message>
    <message>
        <source>Избыток</source>
        <translation>Redundancy</translation>
    </message>
    <message>
        <source>Модели и их невязки</source>
        <translation>Models and their residuals</translation>
    </message>
    <message>
        <source>Система &amp;известных координат:</source>
        <translation>System of the &amp;known coordinates:</translation>
    </message>
    <message>
        <source>&amp;Вставить</source>
        <translation>&amp;Paste</translation>
    </message>
    <message>
        <source>&amp;Добавить</source>
        <translation>&amp;Add</translation>
    </message>
    <message>
        <source>&amp;Удалить</source>
        <translation>&amp;Remove</translation>
    </message>
    <message>
        <source>Закрыть</source>
        <translation>Close</translation>
    </message>
    <message>
        <source>Вставьте строки из таблицы: название, x, y, известные x, y.</source>
        <translation>Paste rows of a table: name, x, y, known x, known y.</translation>
    </message>
    <message>
        <source>обоснована</source>
        <translation>justified</translation>
    </message>
    <message>
        <source>Вероятны грубые ошибки: снимите отметку с точки, чтобы увидеть ответ без неё.</source>
        <translation>Blunders are suspected: clear the check mark of a point to see the answer without it.</translation>
    </message>
    <message>
        <source>Сохранённых нет</source>
        <translation>None are saved</translation>
    </message>
    <message>
        <source>Система по опорным точкам</source>
        <translation>System from control points</translation>
    </message>
    <message>
        <source>Выбрать систему…</source>
        <translation>Choose a system…</translation>
    </message>
    <message>
        <source>Система координат: %1</source>
        <translation>Coordinate system: %1</translation>
    </message>
    <message>
        <source>Выбор системы координат</source>
        <translation>Choose a coordinate system</translation>
    </message>
    <message>
        <source>Выбрать</source>
        <translation>Choose</translation>
    </message>
    <message>
        <source>Отмена</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Без системы</source>
        <translation>No system</translation>
    </message>
    <message>
        <source>Эту систему организация отозвала. Всё равно выбрать её?</source>
        <translation>The authority has withdrawn this system. Choose it all the same?</translation>
    </message>
    <message>
        <source>Готовлю поиск…</source>
        <translation>Preparing the search…</translation>
    </message>
    <message>
        <source>Читаю текст…</source>
        <translation>Reading the text…</translation>
    </message>
    <message>
        <source>Найдено: %1</source>
        <translation>Found: %1</translation>
    </message>
    <message>
        <source>%1 (без слова «%2»)</source>
        <translation>%1 (without “%2”)</translation>
    </message>
    <message>
        <source>здесь нужна система другого вида</source>
        <translation>a system of another kind is needed here</translation>
    </message>
    <message>
        <source>Введённый текст – описание системы&lt;br&gt;&lt;b&gt;%1&lt;/b&gt;</source>
        <translation>The text is the definition of&lt;br&gt;&lt;b&gt;%1&lt;/b&gt;</translation>
    </message>
    <message>
        <source>По введённому тексту систему создать нельзя.</source>
        <translation>No system can be made from this text.</translation>
    </message>
    <message>
        <source>Ничего не найдено.</source>
        <translation>Nothing found.</translation>
    </message>
    <message>
        <source>&lt;a href=&quot;everywhere&quot;&gt;Во всём мире&lt;/a&gt;: %1</source>
        <translation>&lt;a href=&quot;everywhere&quot;&gt;Everywhere&lt;/a&gt;: %1</translation>
    </message>
    <message>
        <source>&lt;a href=&quot;text:%1&quot;&gt;Без слова «%2»&lt;/a&gt;: %3</source>
        <translation>&lt;a href=&quot;text:%1&quot;&gt;Without “%2”&lt;/a&gt;: %3</translation>
    </message>
    <message>
        <source>%1 км</source>
        <translation>%1 km</translation>
    </message>
    <message>
        <source>По данным не решить: больше 30 систем</source>
        <translation>The data cannot decide: more than 30 systems</translation>
    </message>
    <message>
        <source>Расходятся до %1 м: решит точка %2; %3</source>
        <translation>Up to %1 m apart: the point %2; %3 decides</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>%1 м</source>
        <comment>metres</comment>
        <translation>%1 m</translation>
    </message>
    <message>
        <source>&amp;первой стоит координата на север</source>
        <translation>the &amp;northing stands first</translation>
    </message>
    <message>
        <source>Система по данным</source>
        <translation>System from data</translation>
    </message>
    <message>
        <source>Вставьте координаты, по точке в строке: x y</source>
        <translation>Paste coordinates, a point a line: x y</translation>
    </message>
    <message>
        <source>Координаты</source>
        <translation>Coordinates</translation>
    </message>
    <message>
        <source>Название</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Код</source>
        <translation>Code</translation>
    </message>
    <message>
        <source>От места</source>
        <translation>From the place</translation>
    </message>
    <message>
        <source>Внутри области</source>
        <translation>Inside the area</translation>
    </message>
    <message>
        <source>Принято</source>
        <translation>Assumed</translation>
    </message>
    <message>
        <source>Подходящие системы</source>
        <translation>Systems that fit</translation>
    </message>
    <message>
        <source>&amp;Из файла…</source>
        <translation>From a &amp;file…</translation>
    </message>
    <message>
        <source>&amp;Найти</source>
        <translation>Fin&amp;d</translation>
    </message>
    <message>
        <source>&amp;Рядом с:</source>
        <translation>N&amp;ear:</translation>
    </message>
    <message>
        <source>В тексте нет координат: нужны два числа в строке</source>
        <translation>The text holds no coordinates: two numbers a line are needed</translation>
    </message>
    <message>
        <source>Ни в одной системе эти координаты не лежат в её области применения</source>
        <translation>No system&apos;s area of use holds these coordinates</translation>
    </message>
    <message>
        <source>Точка</source>
        <translation>Point</translation>
    </message>
    <message>
        <source>x местный</source>
        <translation>local x</translation>
    </message>
    <message>
        <source>y местный</source>
        <translation>local y</translation>
    </message>
    <message>
        <source>x известный</source>
        <translation>known x</translation>
    </message>
    <message>
        <source>y известный</source>
        <translation>known y</translation>
    </message>
    <message>
        <source>Невязка, м</source>
        <translation>Residual, m</translation>
    </message>
    <message>
        <source>Опорные точки</source>
        <translation>Control points</translation>
    </message>
    <message>
        <source>не число</source>
        <translation>no number</translation>
    </message>
    <message>
        <source>ошибка?</source>
        <translation>blunder?</translation>
    </message>
    <message>
        <source>Сохранить как &amp;мою систему…</source>
        <translation>Save as &amp;my system…</translation>
    </message>
    <message>
        <source>По &amp;точкам…</source>
        <translation>From p&amp;oints…</translation>
    </message>
    <message>
        <source>По моим &amp;данным…</source>
        <translation>From my &amp;data…</translation>
    </message>
    <message>
        <source>&amp;отозванные</source>
        <translation>&amp;withdrawn</translation>
    </message>
    <message>
        <source>Название, код, город или описание в любой нотации</source>
        <translation>Name, code, town, or a definition in any notation</translation>
    </message>
    <message>
        <source>Поиск системы координат</source>
        <translation>Search for a coordinate system</translation>
    </message>
    <message>
        <source>Стрелки вверх и вниз выбирают найденную систему, Enter подтверждает выбор.</source>
        <translation>The up and down arrows select what was found, Enter chooses it.</translation>
    </message>
    <message>
        <source>Весь мир</source>
        <translation>Everywhere</translation>
    </message>
    <message>
        <source>Место…</source>
        <translation>At a point…</translation>
    </message>
    <message>
        <source>Где применяется система</source>
        <translation>Where the system is used</translation>
    </message>
    <message>
        <source>Место можно указать и правой кнопкой мыши на карте</source>
        <translation>A click on the map with the right button gives the point, too</translation>
    </message>
    <message>
        <source>долгота, широта</source>
        <translation>longitude, latitude</translation>
    </message>
    <message>
        <source>Долгота и широта места в градусах</source>
        <translation>Longitude and latitude of the point in degrees</translation>
    </message>
    <message>
        <source>Системы координат по разделам</source>
        <translation>Coordinate systems by section</translation>
    </message>
    <message>
        <source>Найденные системы координат</source>
        <translation>Coordinate systems found</translation>
    </message>
    <message>
        <source>&amp;Поиск:</source>
        <translation>&amp;Search:</translation>
    </message>
    <message>
        <source>&amp;Где:</source>
        <translation>&amp;Where:</translation>
    </message>
    <message>
        <source>Показывать системы, которые организация отозвала</source>
        <translation>Show systems that their authority has withdrawn</translation>
    </message>
    <message>
        <source>Системы, в которых могут быть координаты без системы</source>
        <translation>Systems that coordinates without a system may be in</translation>
    </message>
    <message>
        <source>Система по опорным точкам, координаты которых известны в двух системах</source>
        <translation>A system from control points whose coordinates are known in two systems</translation>
    </message>
    <message>
        <source>Вид карты</source>
        <translation>In the current view</translation>
    </message>
    <message>
        <source>Невязки точек на карте</source>
        <translation>Residuals of the points on a map</translation>
    </message>
    <message>
        <source>%1 м невязки</source>
        <translation>%1 m of a residual</translation>
    </message>
    <message>
        <source>%1 (отозвана)</source>
        <translation>%1 (withdrawn)</translation>
    </message>
    <message>
        <source>Сохранить как мою систему</source>
        <translation>Save as my system</translation>
    </message>
    <message>
        <source>Мои системы</source>
        <translation>My systems</translation>
    </message>
    <message>
        <source>Сохранить</source>
        <translation>Save</translation>
    </message>
    <message>
        <source>&amp;Название:</source>
        <translation>&amp;Name:</translation>
    </message>
    <message>
        <source>&amp;Раздел:</source>
        <translation>&amp;Branch:</translation>
    </message>
    <message>
        <source>нет (%1)</source>
        <translation>none (%1)</translation>
    </message>
    <message>
        <source>%1 (эллипсоид %2)</source>
        <translation>%1 (ellipsoid %2)</translation>
    </message>
    <message>
        <source>не нужен</source>
        <translation>none needed</translation>
    </message>
    <message>
        <source>нет файлов сдвига датума</source>
        <translation>the files of its datum shift are missing</translation>
    </message>
    <message>
        <source>сдвиг датума неизвестен: ошибка до сотен метров</source>
        <translation>datum shift unknown, errors up to hundreds of metres</translation>
    </message>
    <message>
        <source>неизвестна</source>
        <translation>unknown</translation>
    </message>
    <message>
        <source>без потери точности</source>
        <translation>exact</translation>
    </message>
    <message>
        <source>до %1, «%2»</source>
        <translation>up to %1, &quot;%2&quot;</translation>
    </message>
    <message>
        <source>с файлом %1 было бы %2</source>
        <translation>with the file %1 it would be %2</translation>
    </message>
    <message>
        <source>пересчёт в WGS 84: %1</source>
        <translation>conversion to WGS 84: %1</translation>
    </message>
    <message>
        <source>%1:</source>
        <comment>title of a field</comment>
        <translation>%1:</translation>
    </message>
    <message>
        <source>на основе EPSG:%1, с аффинным преобразованием</source>
        <translation>based on EPSG:%1, with an affine transformation</translation>
    </message>
    <message>
        <source>%1, отозвана</source>
        <translation>%1, withdrawn</translation>
    </message>
    <message>
        <source>Вид</source>
        <translation>Kind</translation>
    </message>
    <message>
        <source>Датум</source>
        <translation>Datum</translation>
    </message>
    <message>
        <source>Область</source>
        <translation>Area of use</translation>
    </message>
    <message>
        <source>Точность</source>
        <translation>Accuracy</translation>
    </message>
    <message>
        <source>Строка CoordSys</source>
        <translation>CoordSys text</translation>
    </message>
    <message>
        <source>&amp;Строка CoordSys:</source>
        <translation>&amp;CoordSys text:</translation>
    </message>
    <message>
        <source>Почему систему нельзя выбрать</source>
        <translation>Why the system cannot be chosen</translation>
    </message>
    <message>
        <source>Выберите систему в списке или начните вводить название, код, город или координаты места</source>
        <translation>Choose a system in the list, or begin to type a name, code, town or the coordinates of a place</translation>
    </message>
    <message>
        <source>Систему нельзя создать: %1</source>
        <translation>The system cannot be made: %1</translation>
    </message>
    <message>
        <source>Система координат</source>
        <translation>Coordinate system</translation>
    </message>
    <message>
        <source>&amp;Копировать как</source>
        <translation>&amp;Copy as</translation>
    </message>
    <message>
        <source>Переименовать</source>
        <translation>Rename</translation>
    </message>
    <message>
        <source>Название:</source>
        <translation>Name:</translation>
    </message>
    <message>
        <source>Изменить описание</source>
        <translation>Change the definition</translation>
    </message>
    <message>
        <source>&amp;Переименовать…</source>
        <translation>&amp;Rename…</translation>
    </message>
    <message>
        <source>&amp;Изменить описание…</source>
        <translation>Change the &amp;definition…</translation>
    </message>
    <message>
        <source>Удалить</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>Удалить вашу систему «%1»?</source>
        <translation>Delete your system &quot;%1&quot;?</translation>
    </message>
    <message>
        <source>&amp;Открепить</source>
        <translation>&amp;Unpin</translation>
    </message>
    <message>
        <source>&amp;Закрепить в недавних</source>
        <translation>&amp;Pin among the recent</translation>
    </message>
    <message>
        <source>У&amp;брать из недавних</source>
        <translation>Re&amp;move from the recent</translation>
    </message>
    <message>
        <source>%1° з. д.</source>
        <translation>%1°W</translation>
    </message>
    <message>
        <source>%1° в. д.</source>
        <translation>%1°E</translation>
    </message>
    <message>
        <source>%1° ю. ш.</source>
        <translation>%1°S</translation>
    </message>
    <message>
        <source>%1° с. ш.</source>
        <translation>%1°N</translation>
    </message>
    <message>
        <source>%1 – %2</source>
        <comment>range</comment>
        <translation>%1 – %2</translation>
    </message>
    <message>
        <source>все долготы, %1</source>
        <translation>all longitudes, %1</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <comment>longitudes, latitudes</comment>
        <translation>%1, %2</translation>
    </message>
    <message>
        <source>Карта мира</source>
        <translation>Map of the world</translation>
    </message>
    <message>
        <source>Область применения неизвестна</source>
        <translation>The area of use is not known</translation>
    </message>
    <message>
        <source>Область применения: %1</source>
        <translation>Area of use: %1</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <comment>longitude, latitude</comment>
        <translation>%1, %2</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <comment>system, place</comment>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>&amp;Проекция и эллипсоид местных:</source>
        <translation>&amp;Projection and ellipsoid of local ones:</translation>
    </message>
    <message>
        <source>Нужны только для сдвига датума семью параметрами</source>
        <translation>Needed for the seven-parameter shift of datum alone</translation>
    </message>
    <message>
        <source>Строки из электронной таблицы: название, x, y, известные x, y, а также вес и высоты, если они есть</source>
        <translation>Rows of a spreadsheet: name, x, y, known x, y, then weight and heights where there are any</translation>
    </message>
    <message>
        <source>не заданы</source>
        <translation>not given</translation>
    </message>
    <message>
        <source>Вес</source>
        <translation>Weight</translation>
    </message>
    <message>
        <source>h местная, м</source>
        <translation>local h, m</translation>
    </message>
    <message>
        <source>h известная, м</source>
        <translation>known h, m</translation>
    </message>
    <message>
        <source>без сдвига датума, до сотен метров</source>
        <translation>without the shift of the datum, up to hundreds of metres</translation>
    </message>
    <message>
        <source>точность неизвестна</source>
        <translation>accuracy unknown</translation>
    </message>
    <message>
        <source>до %1</source>
        <translation>to %1</translation>
    </message>
    <message>
        <source>файл %1</source>
        <translation>file %1</translation>
    </message>
    <message>
        <source>зависит от эпохи координат</source>
        <translation>depends on the epoch of the coordinates</translation>
    </message>
    <message>
        <source>Операция &amp;пересчёта:</source>
        <translation>&amp;Operation:</translation>
    </message>
    <message>
        <source>Операция пересчёта</source>
        <translation>Operation</translation>
    </message>
    <message>
        <source>Об операции пересчёта</source>
        <translation>About the operation</translation>
    </message>
    <message>
        <source>PROJ выбирает по месту</source>
        <translation>PROJ chooses by place</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>operation: its accuracy</comment>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>город, страна или долгота, широта; можно не указывать</source>
        <translation>town, country, or longitude, latitude; may be left out</translation>
    </message>
    <message>
        <source>Место «%1» неизвестно: укажите долготу и широту</source>
        <translation>The place “%1” is not known: give longitude and latitude</translation>
    </message>
    <message>
        <source>&amp;Единица местных координат:</source>
        <translation>&amp;Unit of the local coordinates:</translation>
    </message>
    <message>
        <source>по границам, которые указаны в системе</source>
        <translation>by the bounds that the system states</translation>
    </message>
    <message>
        <source>вокруг контрольных точек</source>
        <translation>around the control points</translation>
    </message>
</context>
</TS>
